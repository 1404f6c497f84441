#include <vxsys/Result.h>
#include <vxsys/Text.h>

#include <cstdio>

// A program that has nothing of the library but its platform layer.
int main()
{
    if (VXStrNICmpW(u"Ärger", u"äRGER", 5) != 0)
        return 1;
    std::puts("the platform layer alone");
}
