#pragma once

#include "vxsys/detail/RegistryRecord.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace vxsys::detail {

/// The key of an answer: a value of the store in the folder `place`. Two spellings of one name are different keys.
struct RegistryQuestion {
    std::string_view place;
    ENUM_VX_HKEY hive;
    std::u16string_view key;
    std::u16string_view name;
};

/// The file from which a record was read.
struct RegistryFile {
    std::string path; ///< relative to the folder of the store; empty for none
    struct stat status;
    timespec before; ///< the time of the clock for files, just before it was opened
};

/// A stored answer. It is used as long as the file from which it was read has not changed.
class RegistryAnswer {
public:
    /// True if the answer is still valid and the store still belongs to the user alone. Checks the status of two files
    /// instead of opening and reading one. Never waits.
    bool find(const RegistryQuestion& question);

    RegistryValue value() const noexcept;

    /// Stores an answer, unless it is long, or the file is so new that a change might not be visible: the time in its
    /// status changes in steps, and a later file may get its number. Never waits and never fails.
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
    // The text contains the key, the name, the data, and the path of the file after that of the store.
    std::uint16_t m_nameStart = 0;
    std::uint16_t m_dataStart = 0;
    std::uint16_t m_pathStart = 0;
    std::uint16_t m_placeEnd = 0; ///< 0: unused
    alignas(char16_t) char m_text[ROOM] {};
};

} // namespace vxsys::detail
