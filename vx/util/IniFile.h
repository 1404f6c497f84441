#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/ipc/Semaphore.h"
#include "vxsys/File.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace vx::util {

/// The order of names in an INI file, without regard to case.
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
/// @code
/// util::IniFile settings(u"settings.ini", "settings", 0); // processes that name this semaphore exclude each other
/// assert(settings.AddKey(u"window\\main", u"width", u"640", true) == RESULT_OK);
/// assert(settings.GetWriteResult() == RESULT_OK); // the file has the change
/// char16_t width[16];
/// assert(settings.GetValue(u"Window\\Main", u"WIDTH", width, 16) == RESULT_OK && String(width) == u"640");
/// @endcode
///
/// Each operation first reads the file again if it is not the one that was read last, and each change replaces the
/// whole file at once: sorted, without the comments. A kill or a full disk leaves the old file. A change reports
/// success even if its write fails; this object then keeps the change, also if the file is changed by others, and
/// `GetWriteResult` returns the failure. Each later change or deletion tries to write again, and saves all of them. A
/// file that exists and cannot be read is never overwritten. An exception of a change leaves the object as it was, or
/// with a change that could not be written.
///
/// Names of sets and keys are compared without case, and a "\" separates a set from the set above it. Objects made with
/// the name of a semaphore exclude each other, in all threads and processes that use that name; without one there is no
/// lock. Null texts are treated as empty ones.
///
/// A line that begins with "#", ";" or ":" is a comment, and one that begins with white space is ignored. Reading ends
/// at the first line that is neither of these, nor "[set]" or "key=value". Lines are cut into pieces of 510 bytes.
/// Names of sets are written with 259 bytes at most, keys and values with 254. Text is in the default encoding, or in
/// UTF-8 after a UTF-8 marker.
class VX_API IniFile : public Object {
public:
    /// No semaphore for a null `semaphoreName`. A file that cannot be opened throws IniFileException unless `mustExist`
    /// is 0. The first change creates it.
    IniFile(const char16_t* path, const char* semaphoreName, short mustExist);
    /// Shares the semaphore.
    IniFile(const IniFile& other);
    IniFile& operator=(const IniFile& other);
    ~IniFile() noexcept override;

    /// RESULT_ALREADY_EXISTS for an existing key, unless `overwrite` is true. Creates the set if needed.
    std::int32_t AddKey(const char16_t* set, const char16_t* key, const char16_t* value, bool overwrite);
    /// RESULT_NOT_FOUND for a missing key. A set without keys is kept.
    std::int32_t DeleteKey(const char16_t* set, const char16_t* key);
    /// Also deletes all sets whose name begins with `set`, with regard to case. Always returns 0.
    std::int32_t DeleteSet(const char16_t* set);
    /// RESULT_NOT_FOUND, or RESULT_BUFFER_TOO_SMALL for a value that does not fit into `capacity` units with its
    /// terminator: it is then truncated and has no terminator. A null `value` is treated as having no room.
    std::int32_t GetValue(const char16_t* set, const char16_t* key, char16_t* value, unsigned int capacity);
    /// Whether the file has all changes made through this object: 0, or why the last one could not be written.
    std::int32_t GetWriteResult() const;

private:
    friend class IniFileKeyIterator;
    friend class IniFileSetIterator;

    /// The changes that the file lacks, in the order in which they apply to it.
    struct Changes {
        bool isEmpty() const { return deletedSets.empty() && keys.empty(); }

        std::vector<String> deletedSets;
        /// None for a deleted key.
        std::map<String, std::map<String, std::optional<String>, IniNameLess>, IniNameLess> keys;
    };

    int load();
    int WriteToFile(const char16_t* path);
    void checkAndUpdate();
    bool KeyExists(const String& set, const String& key) const;
    /// Null if there is none.
    const String* findValue(const String& set, const String& key) const;
    bool SetExists(const String& name) const;
    std::vector<String> ListSets() const;
    std::vector<String> ListKeys(const String& set) const;
    std::vector<String> ListSubsets(const String& name) const;
    void internalDeleteSet(const String& name);
    void writeChanges();

    Reference<ipc::Semaphore> m_lock;
    String m_path;
    IniSets m_sets; ///< those of the file, with the changes
    VXFileStatus m_status {};
    Changes m_changes;
    std::int32_t m_readResult = 0; ///< negative: the file exists, and what it holds is not known
    std::int32_t m_writeResult = 0;
};

} // namespace vx::util
