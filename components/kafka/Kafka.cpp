#include "Kafka.h"

#include "../ComponentLibrary.h"
#include "../FailureText.h"
#include "Consumer.h"
#include "Producer.h"

#include <vx/Result.h>
#include <vx/util/vorb/VorbPropertySet.h>

namespace vx::components {

namespace {

/// `make` gets the settings and returns the object.
template <class Make>
std::int32_t create(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result, Make&& make)
{
    if (properties == nullptr || result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    return withFailureText([&] {
        // The set is only read.
        const util::vorb::VorbPropertySet set(const_cast<util::vorb::IPropertySet*>(properties), nullptr);
        return make(KafkaSettings(set))->QueryInterface(iid, result);
    });
}

} // namespace

const vorb::InterfaceData* Kafka::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<Kafka, IVXKafka>(),
        vorb::viewRow<Kafka, vorb::IVXFailureText>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

std::int32_t Kafka::CreateProducer(
    const util::vorb::IPropertySet* properties, std::int32_t waits, const _GUID& iid, void** result)
{
    return create(properties, iid, result, [&](const KafkaSettings& settings) {
        const Reference<KafkaProducer> producer = inModule(GetComModule(), new KafkaProducer(settings));
        if (waits != 0)
            producer->check();
        return producer;
    });
}

std::int32_t Kafka::CreateConsumer(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return create(properties, iid, result,
        [&](const KafkaSettings& settings) { return inModule(GetComModule(), new KafkaConsumer(settings)); });
}

std::int32_t Kafka::GetFailureText(IVXCharBuffer* text)
{
    return storeFailureText(text);
}

} // namespace vx::components
