#include "../ComponentLibrary.h"
#include "Texts.h"

#include <vx/i18n/StringMapBundle.h>

#include <array>
#include <utility>

namespace vx::components {

namespace {

/// A bundle whose file is in the folder "texts" beside this library.
struct Bundle {
    const char16_t* progId;
    const char16_t* description;
    const char16_t* locale;
    const char16_t* file;
};

constexpr Bundle BUNDLES[] = {
    {u"Velmaris.Tools.StringBundle.en_US", u"Messages of the tools in English", u"en_US", u"tools.en_US.txt"},
    {u"Velmaris.Tools.StringBundle.de", u"Messages of the tools in German", u"de", u"tools.de.txt"},
    {u"Velmaris.Tools.StringBundle.fr", u"Messages of the tools in French", u"fr", u"tools.fr.txt"},
};
constexpr std::size_t BUNDLE_COUNT = std::size(BUNDLES);

template <std::size_t index>
constexpr _GUID CLASS_ID {0x2C7E94D8, 0x5B10 + index, 0x4F63, {0xA7, 0x45, 0x91, 0x0E, 0x6B, 0xF2, 0x38, 0xCD}};

template <std::size_t index>
Object* makeBundle()
{
    const Bundle& bundle = BUNDLES[index];
    String path = libraryFolder(reinterpret_cast<const void*>(&makeBundle<index>));
    path.append(u"/texts/").append(bundle.file);
    const Reference<i18n::Locale> locale(new i18n::Locale(bundle.locale));
    return new i18n::StringMapBundle(readTexts(path).get(), locale.get());
}

template <std::size_t index>
vorb::ClassData rowOf()
{
    return makerRow<makeBundle<index>>(
        CLASS_ID<index>, [] { return BUNDLES[index].progId; }, [] { return BUNDLES[index].description; });
}

template <std::size_t... indexes>
std::array<vorb::ClassData, sizeof...(indexes) + 1> rowsOf(std::index_sequence<indexes...>)
{
    return {rowOf<indexes>()..., vorb::ClassData {}};
}

vorb::DllModule& library()
{
    static auto rows = rowsOf(std::make_index_sequence<BUNDLE_COUNT>());
    static vorb::DllModule module(rows.data());
    return module;
}

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::library())
