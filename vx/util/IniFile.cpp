#include "vx/util/IniFile.h"

#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/sync/ScopedWait.h"
#include "vx/util/IniFileException.h"
#include "vx/util/detail/FileBytes.h"
#include "vx/util/detail/IniText.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace vx::util {

namespace {

constexpr int LOADED = 0;
constexpr int NOT_LOADED = -1;
constexpr int WRITTEN = 0;
constexpr int NOT_WRITTEN = 1;

/// Removes the set and all whose name begins with `name`, with regard to case.
template <class Sets>
void eraseSets(Sets& sets, const String& name)
{
    sets.erase(name);
    std::erase_if(sets, [&](const auto& each) { return each.first.startsWith(name); });
}

/// Whether a later change of the file is certain to change its status. A change in the same step of the system's clock
/// might not, so the last change must be some time ago.
bool isSettled(const VXFileStatus& status) noexcept
{
    using namespace std::chrono;
    const auto age = system_clock::now().time_since_epoch() - nanoseconds(status.modified);
    return age > milliseconds(100);
}

/// Moves all values of `addition` to `sets` without an allocation.
void join(IniSets& sets, IniSets& addition) noexcept
{
    sets.merge(addition);
    for (auto& [name, keys] : addition) { // those of sets that exist
        IniKeys& target = sets.find(name)->second;
        target.merge(keys);
        for (auto& [key, value] : keys)
            target.find(key)->second.swap(value);
    }
}

template <class Map>
std::vector<String> namesOf(const Map& map)
{
    std::vector<String> names;
    names.reserve(map.size());
    for (const auto& [name, content] : map)
        names.push_back(name);
    return names;
}

} // namespace

bool IniNameLess::operator()(const String& left, const String& right) const
{
    std::u16string_view leftUnits;
    std::u16string_view rightUnits;
    if (!vx::detail::PlainBuffer::readExact(left, &leftUnits)
        || !vx::detail::PlainBuffer::readExact(right, &rightUnits))
        return left.compare(right, true) < 0;
    return std::ranges::lexicographical_compare(
        leftUnits, rightUnits, std::less<>(), vx::detail::lowerUnit, vx::detail::lowerUnit);
}

IniFileException::IniFileException(TYPE type, const String& description)
    : Exception(description)
    , m_type(type)
{
}

IniFileException::~IniFileException() noexcept = default;

IniFileException::TYPE IniFileException::GetType() const
{
    return m_type;
}

IniFile::IniFile(const char16_t* path, const char* semaphoreName, short mustExist)
    : m_lock(semaphoreName != nullptr ? new ipc::Semaphore(semaphoreName, 1) : nullptr)
    , m_path(path)
{
    const sync::ScopedWait lock(m_lock.get());
    if (load() == NOT_LOADED && mustExist != 0)
        throwDuring(u"open", m_path, IniFileException(IniFileException::TYPE_FILE_NOT_OPENED, m_path),
            m_readResult < 0 ? m_readResult : RESULT_NOT_FOUND);
}

IniFile::IniFile(const IniFile& other)
    : Object(other)
    , m_lock(other.m_lock)
{
    const sync::ScopedWait lock(m_lock.get());
    m_path = other.m_path;
    m_sets = other.m_sets;
    m_status = other.m_status;
    m_changes = other.m_changes;
    m_readResult = other.m_readResult;
    m_writeResult = other.m_writeResult;
}

IniFile& IniFile::operator=(const IniFile& other)
{
    IniFile copy(other);
    std::swap(m_lock, copy.m_lock);
    m_path.swap(copy.m_path);
    m_sets.swap(copy.m_sets);
    m_status = copy.m_status;
    std::swap(m_changes, copy.m_changes);
    m_readResult = copy.m_readResult;
    m_writeResult = copy.m_writeResult;
    return *this;
}

IniFile::~IniFile() noexcept = default;

std::int32_t IniFile::AddKey(const char16_t* set, const char16_t* key, const char16_t* value, bool overwrite)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    const String setName(set);
    const String keyName(key);
    if (!overwrite && KeyExists(setName, keyName))
        return RESULT_ALREADY_EXISTS;
    IniSets addition;
    Changes changes = m_changes;
    changes.keys[setName][keyName] = addition[setName][keyName] = value;
    join(m_sets, addition); // nothing from here on fails
    std::swap(m_changes, changes);
    writeChanges();
    return RESULT_OK;
}

std::int32_t IniFile::DeleteKey(const char16_t* set, const char16_t* key)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    const String setName(set);
    const String keyName(key);
    const bool exists = KeyExists(setName, keyName);
    if (exists) {
        Changes changes = m_changes;
        changes.keys[setName][keyName] = std::nullopt;
        m_sets.find(setName)->second.erase(keyName);
        std::swap(m_changes, changes);
    }
    writeChanges();
    return exists ? RESULT_OK : RESULT_NOT_FOUND;
}

std::int32_t IniFile::DeleteSet(const char16_t* set)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    internalDeleteSet(String(set));
    writeChanges();
    return RESULT_OK;
}

std::int32_t IniFile::GetValue(const char16_t* set, const char16_t* key, char16_t* value, unsigned int capacity)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    const String* const found = findValue(String(set), String(key));
    if (found == nullptr)
        return RESULT_NOT_FOUND;
    if (value == nullptr)
        capacity = 0;
    const auto needed = static_cast<unsigned int>(found->getLength()) + 1;
    VXStrNCpyW(value, TerminatedText(*found), static_cast<std::int32_t>(std::min(needed, capacity)));
    return needed > capacity ? RESULT_BUFFER_TOO_SMALL : RESULT_OK;
}

std::int32_t IniFile::GetWriteResult() const
{
    const sync::ScopedWait lock(m_lock.get());
    return m_writeResult;
}

int IniFile::load()
{
    const TerminatedText path(m_path);
    VXFileStatus status; // taken before the content: a change in between is noticed by the next operation
    const bool hasStatus = VXFileGetStatus(path, &status) >= 0;
    std::string bytes;
    const std::int32_t result = detail::readFile(path, bytes);
    IniSets sets;
    if (result >= 0)
        sets = detail::parseIniText(bytes);
    for (const String& name : m_changes.deletedSets)
        eraseSets(sets, name);
    for (const auto& [name, keys] : m_changes.keys) {
        for (const auto& [key, value] : keys) {
            if (value)
                sets[name][key] = *value;
            else if (const auto found = sets.find(name); found != sets.end())
                found->second.erase(key);
        }
    }
    m_sets.swap(sets);
    m_readResult = result != RESULT_NOT_FOUND ? result : RESULT_OK;
    if (result >= 0 && hasStatus && isSettled(status)) // otherwise the first operation reads once more
        m_status = status;
    return result >= 0 ? LOADED : NOT_LOADED;
}

int IniFile::WriteToFile(const char16_t* path)
{
    constexpr std::int32_t READ_AND_WRITE = 0666;

    if (path == nullptr && m_readResult < 0) { // the content of the file is not known here, and would be lost
        m_writeResult = m_readResult;
        return NOT_WRITTEN;
    }
    m_writeResult = RESULT_OUT_OF_MEMORY; // if the next line throws
    const std::string bytes = detail::printIniText(m_sets);
    VXFileStatus status;
    const std::int32_t result = VXFileReplace(path != nullptr ? path : TerminatedText(m_path).get(), bytes.data(),
        static_cast<std::int64_t>(bytes.size()), READ_AND_WRITE, &status);
    m_writeResult = result;
    if (result < 0)
        return NOT_WRITTEN;
    m_status = status;
    m_changes = Changes();
    return WRITTEN;
}

void IniFile::writeChanges()
{
    if (!m_changes.isEmpty())
        WriteToFile(nullptr);
}

void IniFile::checkAndUpdate()
{
    VXFileStatus status;
    const std::int32_t result = VXFileGetStatus(TerminatedText(m_path), &status);
    if (result < 0) {
        m_readResult = result != RESULT_NOT_FOUND ? result : RESULT_OK;
        return;
    }
    if (status != m_status || m_readResult < 0)
        load();
    m_status = status;
}

bool IniFile::KeyExists(const String& set, const String& key) const
{
    return findValue(set, key) != nullptr;
}

const String* IniFile::findValue(const String& set, const String& key) const
{
    const auto keys = m_sets.find(set);
    if (keys == m_sets.end())
        return nullptr;
    const auto found = keys->second.find(key);
    return found != keys->second.end() ? &found->second : nullptr;
}

bool IniFile::SetExists(const String& name) const
{
    return m_sets.contains(name) || !ListSubsets(name).empty();
}

std::vector<String> IniFile::ListSets() const
{
    return namesOf(m_sets);
}

std::vector<String> IniFile::ListKeys(const String& set) const
{
    const auto found = m_sets.find(set);
    return found != m_sets.end() ? namesOf(found->second) : std::vector<String>();
}

std::vector<String> IniFile::ListSubsets(const String& name) const
{
    std::vector<String> names = ListSets();
    std::erase_if(names, [&](const String& each) { return !each.startsWith(name); });
    return names;
}

void IniFile::internalDeleteSet(const String& name)
{
    if (m_readResult >= 0 && !SetExists(name))
        return;
    Changes changes = m_changes;
    eraseSets(changes.keys, name);
    if (std::find(changes.deletedSets.begin(), changes.deletedSets.end(), name) == changes.deletedSets.end())
        changes.deletedSets.push_back(name);
    eraseSets(m_sets, name);
    std::swap(m_changes, changes);
}

} // namespace vx::util
