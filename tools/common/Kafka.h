#pragma once

#include "Failure.h"
#include "Messages.h"
#include "UriParameters.h"

#include <components/kafka/IVXKafka.h>
#include <vx/Reference.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace vxtools {

/// A topic, given as a URI: kafka://HOST:PORT,HOST:PORT/TOPIC, or with kafkas for TLS. The parameters `ca`, `cert`,
/// `key` and `password` name files; the others are `user`, `mechanism` and `compression`, as the properties of the
/// component are.
class KafkaAddress {
public:
    static bool isOne(std::string_view text) { return text.starts_with("kafka://") || text.starts_with("kafkas://"); }

    /// `further` are the names of parameters that the program reads itself. Throws UsageError.
    explicit KafkaAddress(const std::string& text, std::initializer_list<std::string_view> further = {});

    const std::string& text() const { return m_text; }
    /// "kafka://HOST:PORT/TOPIC", without parameters, which may name secrets.
    std::string name() const { return m_text.substr(0, m_text.find('?')); }
    const UriParameters& parameters() const { return m_parameters; }

    /// Need the component Velmaris.Kafka. Throw Failure. A producer that does not wait finds out later whether the
    /// brokers answer.
    vx::Reference<vx::components::IVXKafkaProducer> openProducer(bool waits) const;
    vx::Reference<vx::components::IVXKafkaConsumer> openConsumer() const;

private:
    template <class Interface, class Create>
    vx::Reference<Interface> open(const Create& create) const;

    std::string m_text;
    std::string m_brokers;
    std::string m_topic;
    bool m_isEncrypted = false;
    UriParameters m_parameters;
};

inline constexpr Message KAFKA {u"tools.kafka", "Kafka"};

/// What a component of Kafka stores by `get`, such as its trouble.
std::string textFrom(const std::function<std::int32_t(IVXCharBuffer*)>& get);
/// Throws a negative result of `object` as Failure.
void checkKafka(IVXUnknown& object, std::int32_t result);
/// The failure of the last operation of `object`, which gave `result`.
std::string failureOf(IVXUnknown& object, std::int32_t result);
/// Of this machine.
std::string hostName();
/// RESULT_NOT_AVAILABLE if there is no room.
std::int32_t sendTo(vx::components::IVXKafkaProducer& producer, std::string_view key, std::string_view value);

} // namespace vxtools
