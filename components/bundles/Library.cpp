#include "../ComponentLibrary.h"
#include "Texts.h"

#include <vx/i18n/StringMapBundle.h>

#include <iterator>

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

template <std::size_t index>
struct BundleClass {
    static constexpr const Bundle& BUNDLE = BUNDLES[index];
    static constexpr _GUID ID {0x2C7E94D8, 0x5B10 + index, 0x4F63, {0xA7, 0x45, 0x91, 0x0E, 0x6B, 0xF2, 0x38, 0xCD}};
    static const char16_t* progId() { return BUNDLE.progId; }
    static const char16_t* description() { return BUNDLE.description; }

    static Object* make()
    {
        String path = libraryFolder(&BUNDLE);
        path.append(u"/texts/").append(BUNDLE.file);
        const Reference<i18n::Locale> locale(new i18n::Locale(BUNDLE.locale));
        return new i18n::StringMapBundle(readTexts(path).get(), locale.get());
    }
};

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY((vx::components::libraryOf<vx::components::BundleClass, std::size(vx::components::BUNDLES)>()))
