#pragma once

#include "vxsys/Registry.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/RegistryPath.h"
#include "vxsys/detail/RegistryRecord.h"
#include "vxsys/posix/RegistryChanges.h"
#include "vxsys/posix/RegistryMemory.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace vxsys::detail {

/// The folder of the registry. A hive and each key in it is a folder, which holds the folders of the keys below and a file
/// "key" with its record. A hive has that file only if it has values.
///
/// Readers look at single files and take no lock. A process that changes something holds the store's lock, prepares the
/// change as "pending" in the top folder, flushes it, and puts it into place by one rename. What a killed process has left
/// under that name is removed by the next change. The file "changes" has the count of the changes. Each operation gives a result code and may throw std::bad_alloc.
class RegistryStore {
public:
    static constexpr const char* PLACE_VARIABLE = "VXSYS4_REGISTRY";

    /// The path of the user's store. `open` refuses one that is not a full path.
    static std::string place();
    /// The path of the store of all users, which this layer only reads. Empty for none.
    static const char* machinePlace() noexcept;

    /// RESULT_NOT_FOUND before the first change, and for an empty path.
    std::int32_t open(const std::string& place = RegistryStore::place());

    /// The open folder.
    int folder() const noexcept { return m_folder.get(); }

    /// Reads the units of the record of a key, which may be those of no record. A hive without values has none. `file`
    /// may be null.
    std::int32_t read(
        ENUM_VX_HKEY hive, const RegistryPath& path, std::u16string& units, RegistryFile* file = nullptr) const;
    /// The names of the keys directly below, in the order of their folded forms.
    std::int32_t readSubkeys(ENUM_VX_HKEY hive, const RegistryPath& path, std::vector<std::u16string>& names) const;

protected:
    /// The folder of the first `count` steps.
    std::int32_t openFolder(ENUM_VX_HKEY hive, const RegistryPath& path, std::size_t count, Descriptor& folder) const;

    /// The rights of a new file.
    mode_t fileMode() const noexcept { return m_mode & ~mode_t {S_IXUSR | S_IXGRP | S_IXOTH}; }

    Descriptor m_folder;
    mode_t m_mode = 0;
};

/// The store while one process changes it.
class RegistryChange : public RegistryStore {
public:
    /// Waits until no other change is being made. Makes the store if `isToBeMade`.
    std::int32_t begin(bool isToBeMade);

    /// Replaces the record of an existing key.
    std::int32_t replace(ENUM_VX_HKEY hive, const RegistryPath& path, std::u16string_view units);
    /// Makes a missing key and the missing keys above it, and gives it `values`.
    std::int32_t create(ENUM_VX_HKEY hive, const RegistryPath& path, const std::vector<RegistryValue>& values);
    std::int32_t remove(ENUM_VX_HKEY hive, const RegistryPath& path);

private:
    std::int32_t makeHive(ENUM_VX_HKEY hive) const noexcept;
    std::int32_t makeFolder(int parent, const char* name, Descriptor& folder) const noexcept;
    std::int32_t writeFile(int folder, const char* name, std::u16string_view units) const;
    /// Moves what is pending to its place, and flushes that folder.
    std::int32_t takePlace(int folder, const char* name) const noexcept;

    std::unique_lock<std::mutex> m_turn;
    Descriptor m_lock; // closed before the turn ends
    ChangeMark m_mark; // ends first
};

} // namespace vxsys::detail
