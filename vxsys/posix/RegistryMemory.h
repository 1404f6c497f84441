#pragma once

#include "vxsys/detail/RegistryRecord.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace vxsys::detail {

/// What is asked for: a value in the store in the folder `place`. Other spellings of one name are other questions.
struct RegistryQuestion {
    std::string_view place;
    ENUM_VX_HKEY hive;
    std::u16string_view key;
    std::u16string_view name;
};

/// The file that a record was read from.
struct RegistryFile {
    std::string path; ///< below the store's folder; empty for none
    struct stat status;
    timespec before; ///< the time of files just before it was opened
};

/// An answer from before, while the file is still the one that it came from.
class RegistryAnswer {
public:
    /// True where it is, and the store still the user's alone. Two looks at the file system take the place of opening and
    /// reading. Never waits.
    bool find(const RegistryQuestion& question);

    RegistryValue value() const noexcept;

    /// Keeps an answer, unless it is long or the file so young that a change might leave nothing to see: the time in its
    /// status moves in steps, and its number is given to the next file when it goes. Never waits and never fails.
    static void keep(const RegistryQuestion& question, const RegistryFile& file, const RegistryValue& value) noexcept;

private:
    static constexpr std::size_t ROOM = 880;

    bool holds(const RegistryQuestion& question, std::size_t hash) const noexcept;
    bool isStillTrue() noexcept;
    std::u16string_view key() const noexcept;
    std::u16string_view name() const noexcept;

    std::size_t m_hash = 0;
    ENUM_VX_HKEY m_hive {};
    ENUM_VX_REG_TYPE m_type {};
    dev_t m_device = 0;
    ino_t m_number = 0;
    off_t m_size = 0;
    timespec m_changed {};
    // In the text stand the key, the name, the data, and the path of the file with that of the store at its head.
    std::uint16_t m_nameStart = 0;
    std::uint16_t m_dataStart = 0;
    std::uint16_t m_pathStart = 0;
    std::uint16_t m_placeEnd = 0; ///< 0: nothing is kept here
    alignas(char16_t) char m_text[ROOM] {};
};

} // namespace vxsys::detail
