#pragma once

#include "vxsys/Registry.h"
#include "vxsys/detail/RegistryPath.h"
#include "vxsys/detail/RegistryRecord.h"
#include "vxsys/posix/Descriptor.h"
#include "vxsys/posix/RegistryMemory.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace vxsys::detail {

/// The folder that the registry lies in. A hive and each key in it is a folder, which holds those of the keys below, and a
/// file "key" with its record; a hive has that file only once it has values.
///
/// Who reads looks at single files, and takes no lock. Whoever changes something holds the store's lock, prepares the change
/// as "pending" in the top folder, flushes it, and lets one renaming do the rest; what a killed process has left under that
/// name goes with the next change. Each operation gives a result code and may throw std::bad_alloc.
class RegistryStore {
public:
    /// Where it is. A path that is not a full one, or empty, is none.
    static std::string place();

    /// RESULT_NOT_FOUND while nobody has written to it.
    std::int32_t open(const std::string& place = RegistryStore::place());

    /// The record of a key, whose texts lie in `units`. One of a hive may be empty. `file` may be null.
    std::int32_t read(ENUM_VX_HKEY hive, const RegistryPath& path, std::u16string& units, RegistryRecord& record,
        RegistryFile* file = nullptr) const;
    /// The names of the keys right below, in the order of their folded forms.
    std::int32_t readSubkeys(ENUM_VX_HKEY hive, const RegistryPath& path, std::vector<std::u16string>& names) const;

protected:
    /// The folder of the first `count` steps.
    std::int32_t openFolder(ENUM_VX_HKEY hive, const RegistryPath& path, std::size_t count, Descriptor& folder) const;

    Descriptor m_folder;
    mode_t m_mode = 0;
};

/// The store while one process changes it.
class RegistryChange : public RegistryStore {
public:
    /// Waits until nobody else changes anything. Makes the store where `isToBeMade`.
    std::int32_t begin(bool isToBeMade);

    /// Makes the record of an existing key another one.
    std::int32_t replace(ENUM_VX_HKEY hive, const RegistryPath& path, const RegistryRecord& record);
    /// Makes a key that is missing, with those above it, and gives it `values`.
    std::int32_t create(ENUM_VX_HKEY hive, const RegistryPath& path, const std::vector<RegistryValue>& values);
    std::int32_t remove(ENUM_VX_HKEY hive, const RegistryPath& path);

private:
    std::int32_t makeHive(ENUM_VX_HKEY hive) const noexcept;
    std::int32_t makeFolder(int parent, const char* name, Descriptor& folder) const noexcept;
    std::int32_t writeFile(int folder, const char* name, const RegistryRecord& record) const;
    /// Renames what is pending, and flushes the folder that it comes to.
    std::int32_t takePlace(int folder, const char* name) const noexcept;

    std::unique_lock<std::mutex> m_turn;
    Descriptor m_lock; // closed first
};

} // namespace vxsys::detail
