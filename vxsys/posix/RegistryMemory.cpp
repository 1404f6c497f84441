#include "vxsys/posix/RegistryMemory.h"

#include "vxsys/detail/StateLock.h"
#include "vxsys/posix/Ownership.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <unistd.h>

namespace vxsys::detail {

namespace {

constexpr std::size_t SETS = 16;
constexpr std::size_t WAYS = 4;

// No destructors, because values may be read until the very end of the process. A thread that cannot lock at once reads
// the files instead of waiting.
constinit StateLock g_lock;
constinit RegistryAnswer g_answers[SETS * WAYS] VX_GUARDED_BY(g_lock);
constinit std::size_t g_lastReplaced VX_GUARDED_BY(g_lock) = 0;

std::size_t hashOf(const RegistryQuestion& question) noexcept
{
    constexpr std::hash<std::u16string_view> hash;
    return hash(question.key) + 31 * hash(question.name) + question.hive;
}

/// Whether every later change of the file is certain to change the time in its status.
bool isSettled(const RegistryFile& file) noexcept
{
    constexpr std::int64_t SECOND = 1'000'000'000;
    constexpr std::int64_t STEP = SECOND / 20; // more than the delay of the system's clock for files
    const timespec& changed = file.status.st_ctim;
    const std::int64_t age = (file.before.tv_sec - changed.tv_sec) * SECOND + file.before.tv_nsec - changed.tv_nsec;
    return age > (changed.tv_nsec == 0 ? 2 * SECOND : STEP); // no fraction: the file system stores whole seconds
}

template <class Unit>
char* put(char* target, std::basic_string_view<Unit> text) noexcept
{
    const std::size_t size = text.size() * sizeof(Unit);
    std::memcpy(target, text.data(), size);
    return target + size;
}

} // namespace

bool RegistryAnswer::find(const RegistryQuestion& question)
{
    const std::size_t hash = hashOf(question);
    {
        if (!g_lock.tryLock())
            return false;
        const StateGuard guard(g_lock, std::adopt_lock);
        const RegistryAnswer* const first = g_answers + hash % SETS * WAYS;
        const RegistryAnswer* const found = std::find_if(
            first, first + WAYS, [&](const RegistryAnswer& answer) { return answer.holds(question, hash); });
        if (found == first + WAYS)
            return false;
        *this = *found;
    }
    return isStillTrue();
}

RegistryValue RegistryAnswer::value() const noexcept
{
    return {name(), m_type, {m_text + m_dataStart, std::size_t {m_pathStart} - m_dataStart}};
}

void RegistryAnswer::keep(
    const RegistryQuestion& question, const RegistryFile& file, const RegistryValue& value) noexcept
{
    const std::size_t units = question.key.size() + question.name.size();
    const std::size_t needed
        = units * sizeof(char16_t) + value.data.size() + question.place.size() + file.path.size() + 2;
    if (file.path.empty() || needed > ROOM || !isSettled(file))
        return;

    const std::size_t hash = hashOf(question);
    if (!g_lock.tryLock())
        return;
    const StateGuard guard(g_lock, std::adopt_lock);
    RegistryAnswer* const first = g_answers + hash % SETS * WAYS;
    RegistryAnswer* place
        = std::find_if(first, first + WAYS, [&](const RegistryAnswer& answer) { return answer.holds(question, hash); });
    if (place == first + WAYS)
        place = first + ++g_lastReplaced % WAYS;

    place->m_hash = hash;
    place->m_hive = question.hive;
    place->m_type = value.type;
    place->m_device = file.status.st_dev;
    place->m_number = file.status.st_ino;
    place->m_size = file.status.st_size;
    place->m_changed = file.status.st_ctim;
    const auto offset = [&](const char* at) { return static_cast<std::uint16_t>(at - place->m_text); };
    char* end = put(place->m_text, question.key);
    place->m_nameStart = offset(end);
    end = put(end, question.name);
    place->m_dataStart = offset(end);
    end = put(end, value.data);
    place->m_pathStart = offset(end);
    end = put(end, question.place);
    place->m_placeEnd = offset(end);
    *end = '/';
    end = put(end + 1, std::string_view(file.path));
    *end = '\0';
}

bool RegistryAnswer::holds(const RegistryQuestion& question, std::size_t hash) const noexcept
{
    return m_placeEnd != 0 && m_hash == hash && m_hive == question.hive && key() == question.key
        && name() == question.name
        && std::string_view(m_text + m_pathStart, std::size_t {m_placeEnd} - m_pathStart) == question.place;
}

bool RegistryAnswer::isStillTrue() noexcept
{
    const uid_t user = ::geteuid();
    struct stat store;
    m_text[m_placeEnd] = '\0';
    if (::lstat(m_text + m_pathStart, &store) != 0 || !S_ISDIR(store.st_mode) || !isOnlyOurs(store, user))
        return false;
    struct stat file;
    m_text[m_placeEnd] = '/';
    return ::lstat(m_text + m_pathStart, &file) == 0 && file.st_ino == m_number && file.st_dev == m_device
        && file.st_size == m_size && file.st_ctim.tv_sec == m_changed.tv_sec
        && file.st_ctim.tv_nsec == m_changed.tv_nsec && isOnlyOurs(file, user);
}

std::u16string_view RegistryAnswer::key() const noexcept
{
    return {reinterpret_cast<const char16_t*>(m_text), m_nameStart / sizeof(char16_t)};
}

std::u16string_view RegistryAnswer::name() const noexcept
{
    return {reinterpret_cast<const char16_t*>(m_text + m_nameStart),
        (std::size_t {m_dataStart} - m_nameStart) / sizeof(char16_t)};
}

} // namespace vxsys::detail
