// Statics of a program live longer than the library's start: text is built before it and read behind its stop.
#include "vx/Exceptions.h"
#include "vx/GlobalLock.h"
#include "vx/Library.h"
#include "vx/String.h"
#include "vx/text/charset/ByteToCharConverter.h"

#include <cstdio>
#include <cstdlib>

namespace {

class Late {
public:
    ~Late()
    {
        if (m_text != u"still here" || !m_empty.isEmpty())
            std::_Exit(3);
    }

private:
    vx::String m_text {u"still here"};
    vx::String m_empty;
};

Late g_late;

int afterStop()
{
    if (VXLIBLibUninit() != 0 || g_pGlobalLock != nullptr)
        return 4;
    try {
        vx::text::charset::ByteToCharConverter::getConverter(u"UTF-8");
        return 5;
    } catch (const vx::IllegalStateException&) {
    }
    return VXLIBLibUninit() == static_cast<std::int32_t>(0x80004005) ? 0 : 6;
}

} // namespace

int main()
{
    if (VXLIBLibInit() != 0 || VXLIBLibUninit() != 0 || g_pGlobalLock == nullptr)
        return 1;
    if (const int failure = afterStop()) {
        std::fprintf(stderr, "stop fails: %d\n", failure);
        return failure;
    }
    return VXLIBLibInit() == 0 && g_pGlobalLock != nullptr ? 0 : 7;
}
