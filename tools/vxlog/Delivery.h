#pragma once

namespace vxlog {

/// Brings the lines of a backlog to their destination, on its own thread.
class Delivery {
public:
    virtual ~Delivery() = default;

    /// Connects before `start` instead of on the thread. Throws Failure.
    virtual void connect() = 0;
    virtual void start() = 0;

    /// Call this after appending to the backlog.
    virtual void wake() noexcept = 0;
    /// Returns when there may be room in the backlog, or when the destination is away. Throws Failure if the thread has
    /// failed.
    virtual void waitForRoom() = 0;
    /// Whether the destination is known not to accept lines at the moment.
    virtual bool isAway() const noexcept = 0;
    virtual bool hasFailed() const noexcept = 0;
    /// Throws the failure of the thread if there is one.
    virtual void check() const = 0;

    /// Returns when the destination has confirmed that it has all lines, or without answers, when it has accepted them.
    /// Throws Failure if it does not.
    virtual void finish() = 0;
};

} // namespace vxlog
