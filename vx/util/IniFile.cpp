#include "vx/util/IniFile.h"

#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/sync/ScopedWait.h"
#include "vx/util/IniFileException.h"
#include "vx/util/detail/IniText.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace vx::util {

namespace {

constexpr int LOADED = 0;
constexpr int NOT_LOADED = -1;
constexpr int WRITTEN = 0;
constexpr int NOT_WRITTEN = 1;

std::int32_t readAll(std::uint32_t file, std::string& bytes)
{
    constexpr std::size_t LEAST_ROOM = 4096;
    std::int64_t size = 0;
    if (VXFileGetSize(file, &size) >= 0 && size > 0)
        bytes.reserve(static_cast<std::size_t>(size) + LEAST_ROOM);
    for (;;) {
        const std::size_t length = bytes.size();
        bytes.resize(std::max(bytes.capacity(), length + LEAST_ROOM));
        std::int32_t done = 0;
        const auto room = std::min<std::size_t>(bytes.size() - length, std::numeric_limits<std::int32_t>::max());
        const std::int32_t result = VXFileRead(file, bytes.data() + length, static_cast<std::int32_t>(room), &done);
        bytes.resize(length + static_cast<std::size_t>(done));
        if (result < 0 || done == 0)
            return result;
    }
}

std::int32_t readFile(const char16_t* path, std::string& bytes)
{
    std::uint32_t file = VX_FILE_INVALID_HANDLE;
    std::int32_t result = VXFileOpen(path, VX_FILE_READ, 0, &file);
    if (result < 0)
        return result;
    try {
        result = readAll(file, bytes);
    } catch (...) {
        VXFileClose(file);
        throw;
    }
    VXFileClose(file);
    return result;
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
    return left.compare(right, true) < 0;
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
        throw IniFileException(IniFileException::TYPE_FILE_NOT_OPENED, m_path);
}

IniFile::IniFile(const IniFile& other)
    : Object(other)
    , m_lock(other.m_lock)
{
    const sync::ScopedWait lock(m_lock.get());
    m_path = other.m_path;
    m_sets = other.m_sets;
    m_status = other.m_status;
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
    m_sets[setName][keyName] = value;
    WriteToFile(nullptr);
    return RESULT_OK;
}

std::int32_t IniFile::DeleteKey(const char16_t* set, const char16_t* key)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    const auto found = m_sets.find(String(set));
    if (found == m_sets.end() || found->second.erase(String(key)) == 0)
        return RESULT_NOT_FOUND;
    WriteToFile(nullptr);
    return RESULT_OK;
}

std::int32_t IniFile::DeleteSet(const char16_t* set)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    if (internalDeleteSet(String(set)))
        WriteToFile(nullptr);
    return RESULT_OK;
}

std::int32_t IniFile::GetValue(const char16_t* set, const char16_t* key, char16_t* value, unsigned int capacity)
{
    const sync::ScopedWait lock(m_lock.get());
    checkAndUpdate();
    const String setName(set);
    const String keyName(key);
    if (!KeyExists(setName, keyName))
        return RESULT_NOT_FOUND;
    const String& found = m_sets[setName][keyName];
    if (value == nullptr)
        capacity = 0;
    const auto needed = static_cast<unsigned int>(found.getLength()) + 1;
    VXStrNCpyW(value, TerminatedText(found), static_cast<std::int32_t>(std::min(needed, capacity)));
    return needed > capacity ? RESULT_BUFFER_TOO_SMALL : RESULT_OK;
}

std::int32_t IniFile::GetWriteResult() const
{
    const sync::ScopedWait lock(m_lock.get());
    return m_writeResult;
}

int IniFile::load()
{
    const bool wasReadable = m_readResult >= 0;
    if (wasReadable)
        m_sets.clear();
    std::string bytes;
    const std::int32_t result = readFile(TerminatedText(m_path), bytes);
    m_readResult = result != RESULT_NOT_FOUND ? result : RESULT_OK;
    if (result < 0)
        return NOT_LOADED;
    IniSets sets = detail::parseIniText(bytes);
    if (!wasReadable) { // changes were made without knowledge of the file
        for (const auto& [name, keys] : m_sets) {
            for (const auto& [key, value] : keys)
                sets[name][key] = value;
        }
    }
    m_sets = std::move(sets);
    return LOADED;
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
    return WRITTEN;
}

void IniFile::checkAndUpdate()
{
    VXFileStatus status;
    const std::int32_t result = VXFileGetStatus(TerminatedText(m_path), &status);
    if (result == RESULT_NOT_FOUND)
        m_readResult = RESULT_OK; // what could not be read was replaced
    if (result < 0)
        return;
    if (status != m_status || m_readResult < 0)
        load();
    m_status = status;
}

bool IniFile::KeyExists(const String& set, const String& key) const
{
    const auto found = m_sets.find(set);
    return found != m_sets.end() && found->second.contains(key);
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

bool IniFile::internalDeleteSet(const String& name)
{
    std::size_t erased = m_sets.erase(name);
    // The sets below these begin with `name` as well.
    erased += std::erase_if(m_sets, [&](const auto& each) { return each.first.startsWith(name); });
    return erased > 0;
}

} // namespace vx::util
