#include <vx/Library.h>
#include <vx/Version.h>
#include <vx/net/SocketFunctions.h>
#include <vx/text/charset/EncInfo.h>

#include <stdio.h>

int main(void)
{
    VXEncInfo info;
    uint32_t count = 0;
    if (VXLIBLibInit() != 0 || VXGetEncInfoByName(u"latin1", &info) != 0 || info.codePage != 28591)
        return 1;
    VXEnumerateEncInfo(&count, NULL);
    if (VXLIBGetVersion() != VXLIB4_VERSION || VXLIB4_VERSION < 40000)
        return 3;
    printf("%u encodings have a code page\n", (unsigned)count);
    return count == 28 && VXLIBLibUninit() == 0 ? 0 : 2;
}
