#pragma once

#include "vx/Object.h"
#include "vx/exec/IRunnable.h"

#include <atomic>
#include <concepts>
#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace vx::exec::detail {

template <class Callable, class... Arguments>
concept Work
    = std::invocable<std::decay_t<Callable>, std::decay_t<Arguments>...> && !std::convertible_to<Callable, IRunnable*>;

/// A callable with copies of its arguments, as `std::thread` keeps them: `std::ref` keeps a reference.
template <class Callable, class... Arguments>
class BoundCall {
public:
    template <class SomeCallable, class... SomeArguments>
    explicit BoundCall(SomeCallable&& callable, SomeArguments&&... arguments)
        : m_parts(std::forward<SomeCallable>(callable), std::forward<SomeArguments>(arguments)...)
    {
    }

    /// May be called once, because it moves the parts.
    decltype(auto) operator()()
    {
        return std::apply(
            [](auto&&... parts) -> decltype(auto) { return std::invoke(std::move(parts)...); }, std::move(m_parts));
    }

private:
    std::tuple<Callable, Arguments...> m_parts;
};

template <class Callable, class... Arguments>
BoundCall(Callable&&, Arguments&&...) -> BoundCall<std::decay_t<Callable>, std::decay_t<Arguments>...>;

/// The runnable of a thread that calls a callable.
template <class Call>
class CallRunnable final : public Object, public IRunnable {
public:
    explicit CallRunnable(Call call)
        : m_call(std::move(call))
    {
    }

    VX_OBJECT_UNKNOWN(Object)

    // IRunnable
    void* run() override
    {
        if (!m_wasCalled.test_and_set())
            static_cast<void>(m_call());
        return nullptr;
    }

private:
    Call m_call;
    std::atomic_flag m_wasCalled;
};

template <class Callable, class... Arguments>
IRunnable* makeRunnable(Callable&& callable, Arguments&&... arguments)
{
    using Call = BoundCall<std::decay_t<Callable>, std::decay_t<Arguments>...>;
    return new CallRunnable<Call>(Call(std::forward<Callable>(callable), std::forward<Arguments>(arguments)...));
}

} // namespace vx::exec::detail
