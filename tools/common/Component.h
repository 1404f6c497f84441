#pragma once

#include "Messages.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vxtools {

/// A component library that is built and installed with the programs.
struct ComponentLibrary {
    const char* file;
    const char* package; ///< of Debian
};

inline constexpr ComponentLibrary BUNDLES {"vxbundles.so", "vxlib4-components"};
inline constexpr ComponentLibrary CODECS {"vxcodecs.so", "vxlib4-components"};
inline constexpr ComponentLibrary KAFKA_LIBRARY {"vxkafka.so", "vxlib4-kafka"};
inline constexpr ComponentLibrary TLS_LIBRARY {"vxtls.so", "vxlib4-tls"};

/// The path of the library where it was installed or built with this program. None if it is not there.
std::optional<std::string> findComponent(const ComponentLibrary& library);
/// Where an installation has the component libraries.
std::string componentFolder();

/// Says how a user gets what is in `library`: by the command that registers it, or else by its package.
Text howToGet(const ComponentLibrary& library);
/// Why the class of this name has no object. `result` is that of its creation.
Text noComponent(const char16_t* progId, const ComponentLibrary& library, std::int32_t result);
/// Says that the encoding is unknown, and what helps.
Text unknownEncoding(const std::string& encoding);

} // namespace vxtools
