#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILogProcessor.h"
#include "vx/log/vorb/ILogProcessor.h"

namespace vx::log::vorb {

/// Passes entries to a processor that is a component. Its failures become ResultExceptions.
class VX_API VorbProcessor : public Object, public vx::log::ILogProcessor {
public:
    /// Holds a reference to the component until destruction. Throws ResultException with RESULT_INVALID_ARGUMENT for
    /// null.
    static Reference<vx::log::ILogProcessor> create(vorb::ILogProcessor* component);

    VX_OBJECT_UNKNOWN(Object)
    ~VorbProcessor() noexcept override;

    // vx::log::ILogProcessor
    /// Throws ResultException with RESULT_NO_INTERFACE if `entry` is null or has no component interface.
    void process(const vx::log::ILogEntry* entry) override;

private:
    explicit VorbProcessor(vorb::ILogProcessor* component);

    Reference<vorb::ILogProcessor> m_component;
};

} // namespace vx::log::vorb
