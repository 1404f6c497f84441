// Compute a check sum
//
// MD5 suits old formats and check sums. It is not secure against attackers.
#include <vx/vxlib4.h>

#include <cstdio>

using namespace vx;

int main()
{
    const signed char text[] = {'a', 'b', 'c'};
    signed char bytes[16];
    crypto::MD5Digest digest;
    digest.update(text, sizeof text);
    digest.getDigest(bytes, sizeof bytes);
    for (const signed char byte : bytes)
        std::printf("%02x", static_cast<unsigned char>(byte));
    std::printf("\n");
}
// Prints:
// 900150983cd24fb0d6963f7d28e17f72
