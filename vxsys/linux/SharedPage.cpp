#include "vxsys/linux/SharedPage.h"

#include "vxsys/detail/Steps.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <limits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <type_traits>
#include <unistd.h>

namespace vxsys::detail {

namespace {

static_assert(std::is_standard_layout_v<SharedPage>, "seen alike by all who map it");
static_assert(std::atomic<std::uint32_t>::is_always_lock_free && std::atomic<std::int64_t>::is_always_lock_free);

constexpr std::int32_t LARGEST = std::numeric_limits<std::int32_t>::max();

/// The longest time that a waiter sleeps before it checks whether a holder has ended, and the shortest between two checks.
constexpr timespec LONGEST_SLEEP = {0, 250'000'000};
constexpr std::int64_t SHORTEST_BETWEEN_LOOKS = 100;

std::int64_t millisecondsNow() noexcept
{
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t {now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

/// The time until the deadline, but at most `longest`.
timespec shorter(const Deadline& deadline, const timespec& longest) noexcept
{
    if (deadline.isNever())
        return longest;
    const timespec left = deadline.left();
    const bool isShorter
        = left.tv_sec < longest.tv_sec || (left.tv_sec == longest.tv_sec && left.tv_nsec < longest.tv_nsec);
    return isShorter ? left : longest;
}

int makeMutex(pthread_mutex_t& mutex) noexcept
{
    pthread_mutexattr_t attributes;
    if (const int error = ::pthread_mutexattr_init(&attributes))
        return error;
    const int error = inOrder([&] { return ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED); },
        [&] { return ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST); },
        [&] { return ::pthread_mutex_init(&mutex, &attributes); });
    ::pthread_mutexattr_destroy(&attributes);
    return error;
}

long futex(std::atomic<std::uint32_t>& word, int operation, std::uint32_t value, const timespec* time) noexcept
{
    static_assert(sizeof word == sizeof(std::uint32_t));
    return ::syscall(SYS_futex, &word, operation, value, time, nullptr, 0);
}

} // namespace

int SharedPage::make(std::uint32_t places) noexcept
{
    m_layout.store(0, std::memory_order_relaxed);
    if (const int error = makeMutex(m_mutex))
        return error;
    m_places = places;
    m_note.length = 0;
    for (std::uint32_t i = 0; i < places; ++i)
        m_openers[i].process.store(0, std::memory_order_relaxed);
    m_layout.store(LAYOUT, std::memory_order_release);
    return 0;
}

void SharedPage::lock() noexcept
{
    if (::pthread_mutex_lock(&m_mutex) != EOWNERDEAD)
        return;
    recount();
    ::pthread_mutex_consistent(&m_mutex);
}

void SharedPage::start(std::uint32_t value, std::uint64_t size) noexcept
{
    m_isRemoved = false;
    m_size = size;
    m_lastLook = 0;
    m_total.store(value, std::memory_order_release);
    recount();
}

bool SharedPage::hasOpener(const ProcessIdentity& observer) noexcept
{
    return std::any_of(
        m_openers, m_openers + m_places, [&](Opener& opener) VX_REQUIRES(this) { return isAlive(opener, observer); });
}

void SharedPage::dropEnded(const ProcessIdentity& observer) noexcept
{
    for (std::uint32_t i = 0; i < m_places; ++i)
        isAlive(m_openers[i], observer);
}

Opener* SharedPage::enter(const ProcessIdentity& process) noexcept
{
    const auto place
        = std::find_if(m_openers, m_openers + m_places, [](const Opener& opener) { return opener.isFree(); });
    if (place == m_openers + m_places)
        return nullptr;
    place->started = process.started;
    place->stack = process.stack;
    place->waiting = 0;
    place->held.store(0, std::memory_order_relaxed);
    place->process.store(process.id, std::memory_order_release);
    return place;
}

void SharedPage::leave(Opener& opener) noexcept
{
    opener.process.store(0, std::memory_order_release);
    recount();
    if (m_value > 0 && m_waiters > 0)
        wake(INT_MAX);
}

int SharedPage::take(Opener& opener, const Deadline& deadline, const ProcessIdentity& observer) noexcept
{
    if (m_value == 0)
        takeBack(observer);
    if (m_value == 0 && !deadline.hasPassed()) {
        ++opener.waiting;
        ++m_waiters;
        do {
            waitForPost(deadline);
            if (m_value == 0)
                takeBack(observer);
        } while (m_value == 0 && !deadline.hasPassed());
        --opener.waiting;
        --m_waiters;
    }
    if (m_value == 0)
        return ETIMEDOUT;
    opener.held.store(opener.held.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    --m_value;
    return 0;
}

int SharedPage::post(Opener& opener) noexcept
{
    if (m_value == LARGEST)
        return EOVERFLOW;
    const std::uint32_t held = opener.held.load(std::memory_order_relaxed);
    if (held > 0)
        opener.held.store(held - 1, std::memory_order_release);
    else
        m_total.store(m_total.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    ++m_value;
    if (m_waiters > 0)
        wake(1);
    return 0;
}

std::int32_t SharedPage::value(const ProcessIdentity& observer) noexcept
{
    takeBack(observer);
    return m_value;
}

void SharedPage::setNote(const VXNamedSemNote& note) noexcept
{
    // The length says whether there is a note, so it is written last.
    volatile std::int64_t& length = m_note.length;
    length = 0;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    m_note.file = note.file;
    m_note.start = note.start;
    if (note.length != 0) {
        m_note.proofLength = note.proofLength;
        std::memcpy(m_note.proof, note.proof, note.proofLength);
    }
    std::atomic_signal_fence(std::memory_order_seq_cst);
    length = note.length;
}

void SharedPage::getNote(VXNamedSemNote& note) const noexcept
{
    note.length = m_note.length;
    note.file = m_note.file;
    note.start = m_note.start;
    if (note.length == 0)
        return;
    note.proofLength = std::min(m_note.proofLength, VXNamedSemNote::MOST_PROOF);
    std::memcpy(note.proof, m_note.proof, note.proofLength);
}

void SharedPage::recount() noexcept
{
    std::int64_t held = 0;
    std::uint32_t waiters = 0;
    for (std::uint32_t i = 0; i < m_places; ++i) {
        if (m_openers[i].isFree())
            continue;
        held += m_openers[i].held.load(std::memory_order_relaxed);
        waiters += m_openers[i].waiting;
    }
    std::int64_t total = m_total.load(std::memory_order_relaxed);
    if (total - held > LARGEST) { // others may have posted up to the limit before these units are returned
        total = held + LARGEST;
        m_total.store(total, std::memory_order_release);
    }
    m_value = static_cast<std::int32_t>(total - held);
    m_waiters = waiters;
}

bool SharedPage::isAlive(Opener& opener, const ProcessIdentity& observer) noexcept
{
    if (opener.isFree())
        return false;
    if (opener.identity().isAlive(observer))
        return true;
    leave(opener);
    return false;
}

void SharedPage::takeBack(const ProcessIdentity& observer) noexcept
{
    const std::int64_t now = millisecondsNow();
    if (now >= m_lastLook && now - m_lastLook < SHORTEST_BETWEEN_LOOKS)
        return;
    m_lastLook = now;
    for (std::uint32_t i = 0; i < m_places; ++i) {
        if (m_openers[i].held.load(std::memory_order_relaxed) > 0 || m_openers[i].waiting > 0)
            isAlive(m_openers[i], observer);
    }
}

void SharedPage::waitForPost(const Deadline& deadline) noexcept
{
    const std::uint32_t wakeUps = m_wakeUps.load(std::memory_order_relaxed);
    const timespec sleep = shorter(deadline, LONGEST_SLEEP);
    unlock();
    futex(m_wakeUps, FUTEX_WAIT, wakeUps, &sleep); // whatever ended the wait, the caller checks again
    lock();
}

void SharedPage::wake(int count) noexcept
{
    m_wakeUps.fetch_add(1, std::memory_order_relaxed);
    futex(m_wakeUps, FUTEX_WAKE, static_cast<std::uint32_t>(count), nullptr);
}

} // namespace vxsys::detail
