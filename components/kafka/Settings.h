#pragma once

#include <vx/String.h>
#include <vx/util/PropertySet.h>

#include <cstdint>
#include <librdkafka/rdkafka.h>
#include <memory>
#include <string>

namespace vx::components {

struct ConfReleaser {
    void operator()(rd_kafka_conf_t* conf) const { rd_kafka_conf_destroy(conf); }
};
using Conf = std::unique_ptr<rd_kafka_conf_t, ConfReleaser>;

/// The values of the properties of `IVXKafka`. The constructor throws ResultException that names the property or file.
struct KafkaSettings {
    explicit KafkaSettings(const util::PropertySet& properties);

    /// What producers and consumers have in common.
    Conf makeConf() const;

    std::string brokers;
    std::string topic;
    int timeout; ///< milliseconds
    bool isEncrypted;
    std::string authorities, certificate, key; ///< texts in PEM form
    std::string user, password, mechanism;
    std::int64_t queueMessages, queueBytes;
    std::string compression;
};

/// Throws ResultException for a value that the library refuses.
void setOption(rd_kafka_conf_t* conf, const char* name, const std::string& value);

} // namespace vx::components
