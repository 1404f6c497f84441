#include "Kafka.h"

#include "../ComponentLibrary.h"
#include "../FailureText.h"
#include "Consumer.h"
#include "Producer.h"

namespace vx::components {

const vorb::InterfaceData* Kafka::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<Kafka, IVXKafka>(),
        vorb::viewRow<Kafka, vorb::IVXFailureText>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

std::int32_t Kafka::CreateProducer(
    const util::vorb::IPropertySet* properties, std::int32_t waits, const _GUID& iid, void** result)
{
    return createFrom(properties, iid, result, [&](const util::PropertySet& set) {
        const Reference<KafkaProducer> producer = inModule(GetComModule(), new KafkaProducer(KafkaSettings(set)));
        if (waits != 0)
            producer->check();
        return producer;
    });
}

std::int32_t Kafka::CreateConsumer(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return createFrom(properties, iid, result,
        [&](const util::PropertySet& set) { return inModule(GetComModule(), new KafkaConsumer(KafkaSettings(set))); });
}

std::int32_t Kafka::GetFailureText(IVXCharBuffer* text)
{
    return storeFailureText(text);
}

} // namespace vx::components
