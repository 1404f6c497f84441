#include "vxsys/posix/RegistryChanges.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/posix/Ownership.h"
#include "vxsys/posix/RegistryStore.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

using namespace vxsys::results;

constexpr const char* COUNT_NAME = "changes";

constinit ChangeCount g_newStores = 0; // always even, as the count of a store that is not being changed

/// The number of a period of about four milliseconds.
std::int64_t currentPeriod() noexcept
{
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return std::int64_t {now.tv_sec} * 256 + (now.tv_nsec >> 22);
}

bool holdsCount(const struct stat& status) noexcept
{
    return S_ISREG(status.st_mode) && status.st_size >= static_cast<off_t>(sizeof(ChangeCount));
}

} // namespace

ChangeMark::~ChangeMark()
{
    if (m_count == nullptr)
        return;
    m_count->fetch_add(1, std::memory_order_release);
    ::munmap(m_count, sizeof *m_count);
}

std::int32_t ChangeMark::begin(int folder, mode_t mode) noexcept
{
    const Descriptor file(retryOnSignal([&] {
        return ::openat(folder, COUNT_NAME, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }));
    struct stat status;
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return VXResultFromNative(errno);
    if (!holdsCount(status)) {
        constexpr char ZERO[sizeof(ChangeCount)] {}; // written, so that the disk has room for the count
        errno = ENOSPC; // if only a part is written
        if (::pwrite(file.get(), ZERO, sizeof ZERO, 0) != sizeof ZERO || ::fchmod(file.get(), mode) != 0)
            return VXResultFromNative(errno);
    }
    void* memory = ::mmap(nullptr, sizeof *m_count, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED)
        return errno == ENODEV ? RESULT_OK : VXResultFromNative(errno);
    m_count = static_cast<ChangeCount*>(memory);
    m_count->fetch_or(1);
    return RESULT_OK;
}

std::uint64_t RegistryWatch::version() noexcept
{
    try {
        const std::int64_t period = currentPeriod();
        if (period != m_period || !isSamePlace()) {
            m_period = renew() ? period : -1;
            ++m_version;
        }
    } catch (const std::exception&) { // exhausted memory
        m_period = -1;
    }
    if (m_period < 0)
        return 0;
    const std::uint64_t user = m_user.value();
    const std::uint64_t machine = m_machine.value();
    if (user != m_lastUser || machine != m_lastMachine) {
        m_lastUser = user;
        m_lastMachine = machine;
        ++m_version;
    }
    return (user | machine) % 2 == 0 ? m_version : 0;
}

void RegistryWatch::close() noexcept
{
    m_user.close();
    m_machine.close();
    m_period = -1;
}

void RegistryWatch::noteNewStore() noexcept
{
    g_newStores.fetch_add(2, std::memory_order_release);
}

bool RegistryWatch::isSamePlace() const
{
    const char* named = ::secure_getenv(RegistryStore::PLACE_VARIABLE); // usual in services, and needs no memory
    return named != nullptr && *named != '\0' ? std::strcmp(named, m_place) == 0 : RegistryStore::place() == m_place;
}

bool RegistryWatch::renew()
{
    const std::string place = RegistryStore::place();
    if (place.size() >= PLACE_SIZE || !m_user.renew(place) || !m_machine.renew(RegistryStore::machinePlace()))
        return false;
    std::strcpy(m_place, place.c_str());
    return m_user.isMapped() || m_machine.isMapped();
}

bool MappedCount::renew(const std::string& place)
{
    RegistryStore store;
    if (const std::int32_t result = store.open(place); failed(result)) {
        close();
        return result == RESULT_NOT_FOUND;
    }
    const Descriptor file(retryOnSignal(
        [&] { return ::openat(store.folder(), COUNT_NAME, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    struct stat status;
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !holdsCount(status) || !isOnlyOurs(status))
        return false;
    if (m_count != nullptr && status.st_ino == m_number && status.st_dev == m_device)
        return true;
    close();
    void* memory = ::mmap(nullptr, sizeof *m_count, PROT_READ, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED)
        return false;
    m_count = static_cast<const ChangeCount*>(memory);
    m_device = status.st_dev;
    m_number = status.st_ino;
    return true;
}

void MappedCount::close() noexcept
{
    if (m_count != nullptr)
        ::munmap(const_cast<ChangeCount*>(m_count), sizeof *m_count);
    m_count = nullptr;
}

std::uint64_t MappedCount::value() const noexcept
{
    return (m_count != nullptr ? *m_count : g_newStores).load(std::memory_order_acquire);
}

} // namespace vxsys::detail
