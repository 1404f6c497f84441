#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILogProcessor.h"
#include "vx/log/vorb/ILogProcessor.h"

namespace vx::log::vorb {

/// Hands entries to a processor on the component side, whose failures become ResultExceptions.
class VX_API VorbProcessor : public Object, public vx::log::ILogProcessor {
public:
    /// The component is counted as long as the processor lives. Null is a ResultException with RESULT_INVALID_ARGUMENT.
    static Reference<vx::log::ILogProcessor> create(vorb::ILogProcessor* component);

    VX_OBJECT_UNKNOWN(Object)
    ~VorbProcessor() noexcept override;

    // vx::log::ILogProcessor
    /// An `entry` without the component face is a ResultException with RESULT_NO_INTERFACE; null is none, and no call.
    void process(const vx::log::ILogEntry* entry) override;

private:
    explicit VorbProcessor(vorb::ILogProcessor* component);

    Reference<vorb::ILogProcessor> m_component;
};

} // namespace vx::log::vorb
