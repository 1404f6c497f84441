#include "../ComponentLibrary.h"
#include "Codec.h"

#include <array>
#include <utility>

namespace vx::components {

namespace {

constexpr _GUID classIdOf(const CodePage& page) noexcept
{
    return {0x6D2F0A51, page.number, 0x4B7E, {0x9C, 0x1A, 0x3E, 0x58, 0xD4, 0x07, 0xB2, 0x96}};
}

template <std::size_t index>
constexpr _GUID CLASS_ID = classIdOf(CODE_PAGES[index]);

template <std::size_t index>
vorb::ClassData rowOf()
{
    return makerRow<[] { return CODE_PAGES[index].make(CODE_PAGES[index]); }>(
        CLASS_ID<index>, [] { return CODE_PAGES[index].progId; }, [] { return CODE_PAGES[index].name(); });
}

template <std::size_t... indexes>
std::array<vorb::ClassData, sizeof...(indexes) + 1> rowsOf(std::index_sequence<indexes...>)
{
    return {rowOf<indexes>()..., vorb::ClassData {}};
}

vorb::DllModule& library()
{
    static auto rows = rowsOf(std::make_index_sequence<CODE_PAGE_COUNT>());
    static vorb::DllModule module(rows.data());
    return module;
}

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::library())
