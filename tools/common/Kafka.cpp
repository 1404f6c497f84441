#include "Kafka.h"

#include "Component.h"
#include "FileName.h"

#include <vx/Exception.h>
#include <vx/Result.h>
#include <vx/String.h>
#include <vx/net/UriReference.h>
#include <vx/util/PropertySet.h>
#include <vx/vorb/FailureText.h>
#include <vxsys/Component.h>

#include <algorithm>
#include <climits>
#include <optional>
#include <unistd.h>
#include <vector>

namespace vxtools {

using namespace vx;
using components::IVXKafka;
using components::IVXKafkaConsumer;
using components::IVXKafkaProducer;
using components::KafkaMessage;

namespace {

constexpr const char16_t* PROG_ID = u"Velmaris.Kafka";
constexpr Message NO_ADDRESS {
    u"tools.no-kafka-address", "\"{0}\" is not in the form kafka://HOST:PORT,HOST:PORT/TOPIC"};
constexpr Message NO_PASSWORD {u"tools.no-kafka-password", "\"{0}\": user and password, a file, need each other"};

struct ParameterRow {
    std::string_view name;
    const char16_t* property;
    bool isFile = false;
    bool needsEncryption = false;
    std::string_view values = {}; ///< all that there are
};
constexpr ParameterRow PARAMETERS[] = {
    {"ca", u"ca", true, true},
    {"cert", u"cert", true, true},
    {"key", u"key", true, true},
    {"user", u"user"},
    {"password", u"passwordFile", true},
    {"mechanism", u"mechanism", false, false, "PLAIN, SCRAM-SHA-256, SCRAM-SHA-512"},
    {"compression", u"compression", false, false, "none, gzip, lz4, snappy, zstd"},
};

/// Whether each broker is a host, which may have a port.
bool areBrokers(std::string_view brokers)
{
    for (std::size_t begin = 0; begin <= brokers.size();) {
        const std::size_t end = std::min(brokers.find(',', begin), brokers.size());
        const auto uri = net::UriReference::parse("kafka://" + std::string(brokers.substr(begin, end - begin)));
        if (!uri || uri->getHostName().empty() || uri->getUserInfo() || !uri->getPath().empty()
            || uri->getPort().value_or(1) == 0 || (!uri->getPortText().value_or("").empty() && !uri->getPort()))
            return false;
        begin = end + 1;
    }
    return true;
}

} // namespace

KafkaAddress::KafkaAddress(const std::string& text, std::initializer_list<std::string_view> further)
    : m_text(text)
{
    const std::size_t start = text.find("//") + 2;
    const std::size_t end = std::min(text.find_first_of("/?#", start), text.size());
    m_brokers = text.substr(start, end - start);
    // The grammar of URIs has no list of hosts.
    const auto uri = net::UriReference::parse(text.substr(0, start) + "brokers" + text.substr(end));
    if (!isOne(text) || !uri || uri->getSegments().size() != 1 || uri->getSegments()[0].empty() || uri->getFragment()
        || !areBrokers(m_brokers))
        throw UsageError(NO_ADDRESS(text));
    m_topic = uri->getSegments()[0];
    m_isEncrypted = uri->getScheme() == "kafkas";
    std::vector<std::string_view> names(further);
    for (const ParameterRow& row : PARAMETERS)
        names.push_back(row.name);
    m_parameters = UriParameters(text, *uri, names);
    for (const ParameterRow& row : PARAMETERS) {
        if (row.needsEncryption && !m_isEncrypted && m_parameters.has(row.name))
            throw UsageError(Failure(text, ONLY_WITH(std::string(row.name), "kafkas://")).text());
        if (!row.values.empty())
            m_parameters.requireOneOf(row.name, row.values);
    }
    if (m_parameters.has("user") != m_parameters.has("password"))
        throw UsageError(NO_PASSWORD(text));
}

Reference<IVXKafkaProducer> KafkaAddress::openProducer(bool waits) const
{
    return open<IVXKafkaProducer>([&](IVXKafka& kafka, const util::vorb::IPropertySet* properties, void** result) {
        return kafka.CreateProducer(properties, waits ? 1 : 0, IVXKafkaProducer::IID, result);
    });
}

Reference<IVXKafkaConsumer> KafkaAddress::openConsumer() const
{
    return open<IVXKafkaConsumer>([](IVXKafka& kafka, const util::vorb::IPropertySet* properties, void** result) {
        return kafka.CreateConsumer(properties, IVXKafkaConsumer::IID, result);
    });
}

template <class Interface, class Create>
Reference<Interface> KafkaAddress::open(const Create& create) const
{
    util::PropertySet properties;
    properties.set(u"brokers", String(m_brokers));
    properties.set(u"topic", String(m_topic));
    properties.set(u"encrypted", m_isEncrypted ? u"1" : u"0");
    properties.set(u"queueMessages", u"20000"); // enough for distant brokers, and little memory
    properties.set(u"queueBytes", u"8388608");
    for (const ParameterRow& row : PARAMETERS) {
        if (const std::optional<std::string> value = m_parameters.find(row.name))
            properties.set(row.property, row.isFile ? canonicalPath(*value) : String(*value));
    }
    Reference<IVXKafka> kafka;
    if (const std::int32_t result = VXComCreateObjectByProgID(PROG_ID, nullptr, &IVXKafka::IID, kafka.outVoid());
        result < 0)
        throw Failure(KAFKA(), noComponent(PROG_ID, KAFKA_LIBRARY, result));
    Reference<Interface> object;
    checkKafka(*kafka, create(*kafka, util::PropertySet::getVorb(properties).get(), object.outVoid()));
    return object;
}

std::string textFrom(const std::function<std::int32_t(IVXCharBuffer*)>& get)
{
    const Reference<String> text(new String);
    throwIfFailed(get(text.get()));
    return text->toUtf8();
}

std::string failureOf(IVXUnknown& object, std::int32_t result)
{
    try {
        vorb::throwIfFailedIn(object, result);
        return {};
    } catch (const Exception& failure) {
        return textOf(failure);
    }
}

void checkKafka(IVXUnknown& object, std::int32_t result)
{
    if (result < 0)
        throw Failure(KAFKA(), failureOf(object, result));
}

std::string hostName()
{
    char name[HOST_NAME_MAX + 1] {};
    return ::gethostname(name, sizeof name - 1) == 0 && *name != '\0' ? name : "localhost";
}

std::int32_t sendTo(IVXKafkaProducer& producer, std::string_view key, std::string_view value)
{
    const auto bytes = [](std::string_view text) { return reinterpret_cast<const signed char*>(text.data()); };
    const KafkaMessage message {
        bytes(key), bytes(value), static_cast<std::int32_t>(key.size()), static_cast<std::int32_t>(value.size())};
    return producer.Send(&message);
}

} // namespace vxtools
