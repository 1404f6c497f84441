#include "common/Component.h"

#include "common/Failure.h"

#include <vx/Result.h>
#include <vx/String.h>
#include <vx/text/charset/EncodingNames.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <strings.h>
#include <vector>

namespace vxtools {

namespace {

namespace fs = std::filesystem;

constexpr Message REGISTER {u"tools.register", "\"vxreg register {0}\" adds it"};
constexpr Message INSTALL {
    u"tools.install", "it is in the component library {0} (package {1}), which \"vxreg register\" adds"};
constexpr Message NOT_REGISTERED {u"tools.not-registered", "the component {0} is not registered; {1}"};
constexpr Message NOT_USABLE {
    u"tools.not-usable", "the component {0} cannot be used: {1}; \"vxreg resolve {0}\" tells more"};
constexpr Message UNKNOWN_ENCODING {u"tools.unknown-encoding", "unknown encoding \"{0}\": {1}"};
constexpr Message SEE_LIST {u"tools.see-list", "vxconv --list prints the known ones"};

/// The names that the library has not are those of the component library.
bool isNameOfComponent(const std::string& encoding)
{
    using vx::text::charset::EncodingNames;
    const auto isWanted
        = [&](const vx::String& name) { return strcasecmp(name.toUtf8().c_str(), encoding.c_str()) == 0; };
    const std::vector<EncodingNames> all = vx::text::charset::getEncodingNames();
    return std::ranges::any_of(all,
        [&](const EncodingNames& each) { return isWanted(each.name) || std::ranges::any_of(each.aliases, isWanted); });
}

} // namespace

std::optional<std::string> findComponent(const ComponentLibrary& library)
{
    std::error_code error;
    const fs::path programs = fs::read_symlink("/proc/self/exe", error).parent_path();
    // An installation may have moved as a whole since it was built. In a build folder both are in folders side by side.
    for (const fs::path& folder :
        {programs / VX_COMPONENTS_FROM_PROGRAMS, programs / "../components", fs::path(VX_COMPONENTS)}) {
        const fs::path file = fs::canonical(folder / library.file, error);
        if (!error)
            return file.string();
    }
    return std::nullopt;
}

std::string componentFolder()
{
    return VX_COMPONENTS;
}

Text howToGet(const ComponentLibrary& library)
{
    const std::optional<std::string> file = findComponent(library);
    return file ? REGISTER(*file) : INSTALL(library.file, library.package);
}

Text noComponent(const char16_t* progId, const ComponentLibrary& library, std::int32_t result)
{
    const std::string name = vx::String(progId).toUtf8();
    return result == vx::RESULT_CLASS_NOT_AVAILABLE ? NOT_REGISTERED(name, howToGet(library))
                                                    : NOT_USABLE(name, textOfResult(result));
}

Text unknownEncoding(const std::string& encoding)
{
    return UNKNOWN_ENCODING(encoding, isNameOfComponent(encoding) ? howToGet(CODECS) : SEE_LIST());
}

} // namespace vxtools
