#pragma once

#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/exec/Thread.h"
#include "vx/exec/detail/Callable.h"
#include "vx/sync/Gate.h"
#include "vxsys/Lock.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace vx::exec {

namespace detail {

/// The end of a task, and its result or exception.
template <class Result>
class Outcome : public Object {
public:
    using Value = std::conditional_t<std::is_void_v<Result>, std::monostate,
        std::conditional_t<std::is_reference_v<Result>, std::add_pointer_t<Result>, Result>>;

    Outcome() = default;

    bool wait(std::uint32_t milliseconds) { return m_ended.wait(milliseconds); }

    Result take()
    {
        if (m_failure != nullptr)
            std::rethrow_exception(std::exchange(m_failure, nullptr));
        if (!m_value)
            throw IllegalStateException(u"task has no result");
        Value value = *std::exchange(m_value, std::nullopt);
        if constexpr (std::is_reference_v<Result>)
            return static_cast<Result>(*value);
        else if constexpr (!std::is_void_v<Result>)
            return value;
    }

    template <class Call>
    void fill(Call& call)
    {
        const End end {m_ended}; // also if the thread is ended inside
        try {
            if constexpr (std::is_void_v<Result>) {
                call();
                m_value.emplace();
            } else if constexpr (std::is_reference_v<Result>) {
                auto&& result = call();
                m_value.emplace(std::addressof(result));
            } else {
                m_value.emplace(call());
            }
        } catch (...) {
            m_failure = std::current_exception();
            if (m_failure == nullptr)
                throw; // runs through the frames of a thread that is being ended
        }
    }

private:
    struct End {
        ~End() { gate.open(); }
        sync::Gate& gate;
    };

    std::optional<Value> m_value;
    std::exception_ptr m_failure;
    sync::Gate m_ended;
};

/// A friend of all tasks instead of `runAsync`: Clang 16 does not recognise a function template with constraints as a
/// friend.
struct TaskStart {
    template <class Result, class Call>
    static auto start(Call call);
};

} // namespace detail

/// Work that `runAsync` has started in a new thread. One thread at a time may use this object.
///
/// @code
/// exec::Task<int> answer = exec::runAsync([](int a, int b) { return a * b; }, 6, 7);
/// assert(answer.get() == 42);
/// @endcode
template <class Result>
class [[nodiscard]] Task {
public:
    Task(Task&& other) noexcept
        : m_outcome(std::move(other.m_outcome))
        , m_thread(std::move(other.m_thread))
    {
    }
    Task& operator=(Task&& other) noexcept
    {
        Task(std::move(other)).swap(*this);
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    /// Waits for the end of the work and drops its result or exception.
    ~Task() { join(); }

    void swap(Task& other) noexcept
    {
        m_outcome.swap(other.m_outcome);
        m_thread.swap(other.m_thread);
    }

    /// Returns false if the work has not ended within `milliseconds`; `VX_WAIT_FOREVER` has no limit.
    bool wait(std::uint32_t milliseconds = VX_WAIT_FOREVER) { return outcome().wait(milliseconds); }

    /// Waits for the end of the work and returns its result, or throws its exception. A second call, and one after a
    /// `pthread_exit` in the work, throw IllegalStateException.
    Result get()
    {
        detail::Outcome<Result>& outcome = this->outcome();
        join();
        return outcome.take();
    }

private:
    friend struct detail::TaskStart;

    template <class Call>
    explicit Task(Call call)
        : m_outcome(new detail::Outcome<Result>)
        , m_thread(std::make_unique<Thread>(
              [outcome = m_outcome, call = std::move(call)]() mutable { outcome->fill(call); }))
    {
        m_thread->start();
    }

    detail::Outcome<Result>& outcome() const
    {
        if (m_outcome == nullptr)
            throw IllegalStateException(u"task was moved");
        return *m_outcome;
    }

    void join()
    {
        if (m_thread != nullptr)
            std::exchange(m_thread, nullptr)->join();
    }

    Reference<detail::Outcome<Result>> m_outcome;
    std::unique_ptr<Thread> m_thread; ///< until it is joined
};

template <class Result, class Call>
auto detail::TaskStart::start(Call call)
{
    return Task<Result>(std::move(call));
}

/// Starts a thread that calls `callable` with copies of the arguments. Throws ResultException if the system cannot start
/// one.
template <class Callable, class... Arguments>
requires detail::Work<Callable, Arguments...>
auto runAsync(Callable&& callable, Arguments&&... arguments)
{
    using Result = std::invoke_result_t<std::decay_t<Callable>, std::decay_t<Arguments>...>;
    return detail::TaskStart::start<Result>(
        detail::BoundCall(std::forward<Callable>(callable), std::forward<Arguments>(arguments)...));
}

} // namespace vx::exec
