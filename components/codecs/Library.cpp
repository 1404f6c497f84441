#include "../ComponentLibrary.h"
#include "Codec.h"

namespace vx::components {

namespace {

template <std::size_t index>
struct CodecClass {
    static constexpr const CodePage& PAGE = CODE_PAGES[index];
    static constexpr _GUID ID {0x6D2F0A51, PAGE.number, 0x4B7E, {0x9C, 0x1A, 0x3E, 0x58, 0xD4, 0x07, 0xB2, 0x96}};
    static const char16_t* progId() { return PAGE.progId; }
    static const char16_t* description() { return PAGE.name(); }
    static Codec* make() { return PAGE.make(PAGE); }
};

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY((vx::components::libraryOf<vx::components::CodecClass, vx::components::CODE_PAGE_COUNT>()))
