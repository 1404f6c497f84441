#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/ipc/Semaphore.h"
#include "vxsys/File.h"

#include <cstdint>
#include <map>
#include <vector>

namespace vx::util {

/// The order of names in an INI file, in which case does not count.
struct VX_API IniNameLess {
    bool operator()(const String& left, const String& right) const;
};

/// Values by key, and keys by set.
using IniKeys = std::map<String, String, IniNameLess>;
using IniSets = std::map<String, IniKeys, IniNameLess>;

/// Sets of keys and values in a text file that several processes may share:
///
///     [set\subset]
///     key=value
///
/// Each operation first reads the file again if it is not the one last seen, and each change replaces the whole file at
/// once: sorted, without the comments. A kill or a full disk leaves the old file; a write that fails is not told, and this
/// object alone knows the change then. Names of sets and keys count in any case of letters, and a "\" tells a set from the
/// set above it. Made with the name of a semaphore, all operations of all threads and processes under that name are kept
/// apart; without one nothing is. Null texts are empty ones.
///
/// A line beginning with "#", ";" or ":" is a comment, one that begins with white space means nothing, and the first that is
/// neither "[set]" nor "key=value" ends the reading. Lines are cut into pieces of 510 bytes. Names of sets are written with
/// 259 bytes at most, keys and values with 254. Text is in the default encoding, or from a UTF-8 marker on in UTF-8.
class VX_API IniFile : public Object {
public:
    /// No semaphore for a null `semaphoreName`. A file that cannot be opened throws IniFileException unless `mustExist` is
    /// 0; it is made by the first change.
    IniFile(const char16_t* path, const char* semaphoreName, short mustExist);
    /// Shares the semaphore.
    IniFile(const IniFile& other);
    IniFile& operator=(const IniFile& other);
    ~IniFile() noexcept override;

    /// RESULT_ALREADY_EXISTS for a key that is there, unless `overwrite`. Makes the set.
    std::int32_t AddKey(const char16_t* set, const char16_t* key, const char16_t* value, bool overwrite);
    /// RESULT_NOT_FOUND for a key that is not there. A set without keys stays.
    std::int32_t DeleteKey(const char16_t* set, const char16_t* key);
    /// With all sets whose name begins with `set`, in this case of letters. 0 always.
    std::int32_t DeleteSet(const char16_t* set);
    /// RESULT_NOT_FOUND, or RESULT_BUFFER_TOO_SMALL for a value that does not fit into `capacity` units with its
    /// terminator: then it arrives cut, without one.
    std::int32_t GetValue(const char16_t* set, const char16_t* key, char16_t* value, unsigned int capacity);

private:
    friend class IniFileKeyIterator;
    friend class IniFileSetIterator;

    int load();
    int WriteToFile(const char16_t* path);
    void checkAndUpdate();
    bool KeyExists(const String& set, const String& key) const;
    bool SetExists(const String& name) const;
    std::vector<String> ListSets() const;
    std::vector<String> ListKeys(const String& set) const;
    std::vector<String> ListSubsets(const String& name) const;
    bool internalDeleteSet(const String& name);

    Reference<ipc::Semaphore> m_lock;
    String m_path;
    IniSets m_sets;
    VXFileStatus m_status {};
    bool m_isReadable = true; ///< there was no file, or it could be read
};

} // namespace vx::util
