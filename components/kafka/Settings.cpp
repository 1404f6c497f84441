#include "Settings.h"

#include <vx/Exception.h>
#include <vx/Result.h>
#include <vx/io/FileInputStream.h>

#include <charconv>
#include <limits>

namespace vx::components {

namespace {

std::string textIn(const util::PropertySet& properties, const char16_t* key, const char* otherwise = "")
{
    return properties.hasProperty(key) ? properties.get(key).toUtf8() : otherwise;
}

std::int64_t numberIn(const util::PropertySet& properties, const char16_t* key, std::int64_t otherwise,
    std::int64_t least, std::int64_t most)
{
    if (!properties.hasProperty(key))
        return otherwise;
    const std::string text = properties.get(key).toUtf8();
    std::int64_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < least || number > most)
        throw ResultException(RESULT_INVALID_ARGUMENT, String(key) + u" is no such number: " + properties.get(key));
    return number;
}

/// The content of a small file; empty without the property.
std::string fileIn(const util::PropertySet& properties, const char16_t* key)
{
    constexpr std::int32_t MOST = 1024 * 1024; // a device may have no end
    constexpr std::int32_t STEP = 16 * 1024;
    std::string bytes;
    if (!properties.hasProperty(key))
        return bytes;
    const String path = properties.get(key);
    io::FileInputStream file(path);
    for (std::int32_t got = 0; got >= 0;) {
        const std::size_t size = bytes.size();
        if (size > MOST)
            throw ResultException(RESULT_INVALID_ARGUMENT, path + u": the file is too large for " + key);
        bytes.resize(size + STEP);
        got = file.read(reinterpret_cast<signed char*>(bytes.data() + size), STEP);
        bytes.resize(size + static_cast<std::size_t>(got > 0 ? got : 0));
    }
    if (bytes.empty() || bytes.find('\0') != bytes.npos)
        throw ResultException(RESULT_INVALID_ARGUMENT, path + u": is no text for " + key);
    return bytes;
}

} // namespace

KafkaSettings::KafkaSettings(const util::PropertySet& properties)
    : brokers(textIn(properties, u"brokers"))
    , topic(textIn(properties, u"topic"))
    , timeout(static_cast<int>(numberIn(properties, u"timeout", 30'000, 1, std::numeric_limits<int>::max())))
    , isEncrypted(numberIn(properties, u"encrypted", 0, 0, 1) == 1)
    , authorities(fileIn(properties, u"ca"))
    , certificate(fileIn(properties, u"cert"))
    , key(fileIn(properties, u"key"))
    , user(textIn(properties, u"user"))
    , mechanism(textIn(properties, u"mechanism", "SCRAM-SHA-512"))
    , queueMessages(numberIn(properties, u"queueMessages", 100'000, 1, 10'000'000))
    , queueBytes(numberIn(properties, u"queueBytes", 32 * 1024 * 1024, 1, std::int64_t {1} << 30))
    , compression(textIn(properties, u"compression", "lz4"))
{
    if (brokers.empty() || topic.empty())
        throw ResultException(RESULT_INVALID_ARGUMENT, u"brokers or topic is missing");
    if (!user.empty()) {
        if (!properties.hasProperty(u"passwordFile"))
            throw ResultException(RESULT_INVALID_ARGUMENT, u"user needs passwordFile");
        const std::string text = fileIn(properties, u"passwordFile");
        password = text.substr(0, text.find_first_of("\r\n"));
    }
}

void setOption(rd_kafka_conf_t* conf, const char* name, const std::string& value)
{
    char why[512];
    if (rd_kafka_conf_set(conf, name, value.c_str(), why, sizeof why) != RD_KAFKA_CONF_OK)
        throw ResultException(RESULT_INVALID_ARGUMENT, String(std::string_view(why)));
}

Conf KafkaSettings::makeConf() const
{
    Conf conf(rd_kafka_conf_new());
    const auto set = [&](const char* name, const std::string& value) { setOption(conf.get(), name, value); };
    const bool isKnown = !user.empty();
    set("bootstrap.servers", brokers);
    set("client.id", "vxkafka");
    set("socket.keepalive.enable", "true");
    set("security.protocol", isEncrypted ? (isKnown ? "sasl_ssl" : "ssl") : isKnown ? "sasl_plaintext" : "plaintext");
    const auto setPem = [&](const char* name, const std::string& text) {
        if (isEncrypted && !text.empty())
            set(name, text);
    };
    setPem("ssl.ca.pem", authorities);
    setPem("ssl.certificate.pem", certificate);
    setPem("ssl.key.pem", key.empty() ? certificate : key);
    if (isKnown) {
        set("sasl.mechanisms", mechanism);
        set("sasl.username", user);
        set("sasl.password", password);
    }
    // Failures are told by the results and texts of this component.
    rd_kafka_conf_set_log_cb(conf.get(), [](const rd_kafka_t*, int, const char*, const char*) {});
    return conf;
}

} // namespace vx::components
