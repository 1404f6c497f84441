#include "vxsys/detail/LockOrder.h"

#include "vxsys/Thread.h"
#include "vxsys/detail/Handle.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/StateLock.h"
#include "vxsys/detail/ThreadNumber.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <pthread.h>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vxsys::detail {

constinit std::atomic<LockOrder::State> LockOrder::s_state {State::UNKNOWN};

namespace {

std::string describe(VXHandle lock)
{
    constexpr const char* KINDS[] = {"mutex", "event", "gate", "reader-writer lock", "semaphore", "condition"};
    std::string text = KINDS[static_cast<int>(lock->kind)];
    if (lock->label != nullptr)
        return text + " \"" + lock->label + '"';
    char address[2 + 2 * sizeof lock + 1];
    std::snprintf(address, sizeof address, "%p", static_cast<void*>(lock));
    return text + " at " + address;
}

void writeToStandardError(const char* text, void*)
{
    retryOnSignal([&] { return ::write(STDERR_FILENO, text, std::strlen(text)); });
}

} // namespace

/// The state of the checks, which is empty while they are off.
class LockOrder::Checker {
public:
    Checker() noexcept = default;
    Checker(const Checker&) = delete;
    Checker& operator=(const Checker&) = delete;
    ~Checker() { stop(); } // locks may outlive it

    static Checker& instance()
    {
        static Checker checker;
        static const int registered
            = ::pthread_atfork([] { checker.beforeFork(); }, [] { checker.afterFork(); }, [] { checker.afterFork(); });
        static_cast<void>(registered);
        return checker;
    }

    void start(VXLockOrderReport report, void* context)
    {
        const StateGuard guard(m_lock);
        m_report = report != nullptr ? report : writeToStandardError;
        m_context = context;
        s_state.store(State::ON, std::memory_order_relaxed);
    }

    void stop() noexcept
    {
        const StateGuard guard(m_lock);
        s_state.store(State::OFF, std::memory_order_relaxed);
        m_nodes.clear();
        m_held.clear();
    }

    void waits(VXHandle lock);
    void acquired(VXHandle lock, std::uint32_t depth);
    void releases(VXHandle lock, Release kind);
    void destroyed(VXHandle lock);

private:
    /// A thread held one lock and acquired another one.
    struct Step {
        VXHandle to;
        std::uint32_t thread; ///< as the system names it
        bool isReported;
    };
    struct Node {
        std::vector<Step> steps;
        bool isSignal = false;
    };
    struct Held {
        VXHandle lock;
        std::uint32_t count;
    };

    bool isOn() const noexcept { return s_state.load(std::memory_order_relaxed) == State::ON; }
    /// Adds the step of the calling thread. Returns the report of a cycle that it closes, empty for none.
    std::string addStep(VXHandle from, VXHandle to) VX_REQUIRES(m_lock);
    /// The steps that lead from one lock to another one, each with its first lock; the last one first.
    std::vector<std::pair<VXHandle, Step*>> findPath(VXHandle from, VXHandle to) VX_REQUIRES(m_lock);
    void leave(VXHandle lock) noexcept VX_REQUIRES(m_lock);

    void beforeFork() VX_NO_THREAD_SAFETY_ANALYSIS { m_lock.lock(); }
    void afterFork() VX_NO_THREAD_SAFETY_ANALYSIS { m_lock.unlock(); }

    StateLock m_lock;
    std::unordered_map<VXHandle, Node> m_nodes VX_GUARDED_BY(m_lock);
    std::unordered_map<std::uint64_t, std::vector<Held>> m_held VX_GUARDED_BY(m_lock); ///< by the thread's number
    VXLockOrderReport m_report VX_GUARDED_BY(m_lock) = writeToStandardError;
    void* m_context VX_GUARDED_BY(m_lock) = nullptr;
};

void LockOrder::Checker::waits(VXHandle lock)
{
    std::string text;
    VXLockOrderReport report = nullptr;
    void* context = nullptr;
    {
        const StateGuard guard(m_lock);
        const auto own = m_held.find(threadNumber());
        if (!isOn() || own == m_held.end() || m_nodes[lock].isSignal)
            return;
        if (std::ranges::any_of(own->second, [&](const Held& held) { return held.lock == lock; }))
            return; // it is recursive, or the call fails
        for (const Held& held : own->second)
            text += addStep(held.lock, lock);
        report = m_report;
        context = m_context;
    }
    if (!text.empty())
        report(text.c_str(), context);
}

void LockOrder::Checker::acquired(VXHandle lock, std::uint32_t depth)
{
    const StateGuard guard(m_lock);
    if (!isOn() || m_nodes[lock].isSignal)
        return;
    std::vector<Held>& own = m_held[threadNumber()];
    const auto known = std::ranges::find(own, lock, &Held::lock);
    if (known != own.end())
        known->count += depth;
    else
        own.push_back({lock, depth});
}

void LockOrder::Checker::releases(VXHandle lock, Release kind)
{
    const StateGuard guard(m_lock);
    if (!isOn())
        return;
    const auto own = m_held.find(threadNumber());
    if (own != m_held.end()) {
        const auto known = std::ranges::find(own->second, lock, &Held::lock);
        if (known != own->second.end()) {
            if (kind == Release::ALL || --known->count == 0)
                own->second.erase(known);
            if (own->second.empty())
                m_held.erase(own);
            return;
        }
    }
    if (kind == Release::BY_ANY_THREAD && !std::exchange(m_nodes[lock].isSignal, true))
        leave(lock);
}

void LockOrder::Checker::destroyed(VXHandle lock)
{
    const StateGuard guard(m_lock);
    leave(lock);
    m_nodes.erase(lock);
}

std::string LockOrder::Checker::addStep(VXHandle from, VXHandle to)
{
    std::vector<Step>& steps = m_nodes[from].steps;
    if (std::ranges::find(steps, to, &Step::to) != steps.end())
        return {};
    const auto path = findPath(to, from);
    const bool wasReported = path.size() == 1 && path.front().second->isReported; // with a detour the other way round
    const std::uint32_t thread = VXThreadGetCurrentId();
    std::string text;
    if (!path.empty() && !wasReported) {
        text = "vxlib4: locks are acquired in two orders, which can become a deadlock:\n  thread "
            + std::to_string(thread) + " holds " + describe(from) + " and acquires " + describe(to) + '\n';
        for (auto step = path.rbegin(); step != path.rend(); ++step)
            text += "  thread " + std::to_string(step->second->thread) + " held " + describe(step->first)
                + " and acquired " + describe(step->second->to) + '\n';
    }
    steps.push_back({to, thread, !path.empty()});
    return text;
}

std::vector<std::pair<VXHandle, LockOrder::Checker::Step*>> LockOrder::Checker::findPath(VXHandle from, VXHandle to)
{
    std::unordered_map<VXHandle, std::pair<VXHandle, Step*>> cameFrom;
    std::vector<VXHandle> open {from};
    while (!open.empty() && !cameFrom.contains(to)) {
        auto* const lock = open.back();
        open.pop_back();
        const auto node = m_nodes.find(lock);
        if (node == m_nodes.end())
            continue;
        for (Step& step : node->second.steps) {
            if (step.to != from && cameFrom.try_emplace(step.to, lock, &step).second)
                open.push_back(step.to);
        }
    }
    std::vector<std::pair<VXHandle, Step*>> path;
    if (cameFrom.contains(to)) {
        for (VXHandle lock = to; lock != from; lock = path.back().first)
            path.push_back(cameFrom[lock]);
    }
    return path;
}

void LockOrder::Checker::leave(VXHandle lock) noexcept
{
    for (auto& [from, node] : m_nodes) {
        if (from == lock)
            node.steps.clear();
        else
            std::erase_if(node.steps, [&](const Step& step) { return step.to == lock; });
    }
    for (auto& [thread, held] : m_held)
        std::erase_if(held, [&](const Held& each) { return each.lock == lock; });
}

namespace {

/// A check for which there is no memory is left out.
template <class Work>
void attempt(Work work) noexcept
{
    try {
        work();
    } catch (const std::exception&) {
        return;
    }
}

} // namespace

void LockOrder::start(VXLockOrderReport report, void* context) noexcept
{
    Checker::instance().start(report, context);
}

void LockOrder::stop() noexcept
{
    Checker::instance().stop();
}

void LockOrder::waits(VXHandle lock) noexcept
{
    if (lock != nullptr)
        attempt([&] { Checker::instance().waits(lock); });
}

void LockOrder::acquired(VXHandle lock, std::uint32_t depth) noexcept
{
    attempt([&] { Checker::instance().acquired(lock, depth); });
}

void LockOrder::releases(VXHandle lock, Release kind) noexcept
{
    if (lock != nullptr)
        attempt([&] { Checker::instance().releases(lock, kind); });
}

void LockOrder::destroyed(VXHandle lock) noexcept
{
    attempt([&] { Checker::instance().destroyed(lock); });
}

bool LockOrder::readEnvironment() noexcept
{
    const char* const value = ::secure_getenv("VXLIB4_LOCK_ORDER");
    const bool isOn = value != nullptr && *value != '\0' && std::strcmp(value, "0") != 0;
    State unknown = State::UNKNOWN; // a call may have decided meanwhile
    if (!isOn)
        s_state.compare_exchange_strong(unknown, State::OFF, std::memory_order_relaxed);
    else if (s_state.load(std::memory_order_relaxed) == State::UNKNOWN)
        start(nullptr, nullptr);
    return s_state.load(std::memory_order_relaxed) == State::ON;
}

} // namespace vxsys::detail

void VXLockOrderStart(VXLockOrderReport report, void* context) noexcept
{
    vxsys::detail::LockOrder::start(report, context);
}

void VXLockOrderStop() noexcept
{
    vxsys::detail::LockOrder::stop();
}
