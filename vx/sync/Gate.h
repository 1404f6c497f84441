#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// All pass while it is open. It is born closed.
class VX_API Gate : public Object {
public:
    /// `name` labels it for a person; null is anonymous.
    explicit Gate(const char* name = nullptr, unsigned int flags = 0);
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() noexcept(false) override;

    // Object
    void wait() override;
    bool tryWait() override;

    /// False when `milliseconds` ran out first; 0xFFFFFFFF waits for ever.
    virtual bool wait(std::uint32_t milliseconds);
    /// Frees everyone who waits, also when the gate is closed at once.
    virtual void open();
    virtual void close();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
