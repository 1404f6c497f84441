#pragma once

#include "IVXKafka.h"

#include <vx/Object.h>
#include <vx/vorb/FailureText.h>

namespace vx::components {

class Kafka final : public Object, public IVXKafka, public vorb::IVXFailureText {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXKafka
    std::int32_t CreateProducer(
        const util::vorb::IPropertySet* properties, std::int32_t waits, const _GUID& iid, void** result) override;
    std::int32_t CreateConsumer(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override;
};

} // namespace vx::components
