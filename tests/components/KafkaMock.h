#pragma once

#include <cstdio>
#include <cstdlib>
#include <librdkafka/rdkafka.h>
#include <librdkafka/rdkafka_mock.h>
#include <string>

namespace vx {

/// A small cluster in this process, which any client on the machine can use. It keeps messages in memory.
class KafkaMock {
public:
    explicit KafkaMock(int brokers)
    {
        char why[512];
        rd_kafka_conf_t* const conf = rd_kafka_conf_new();
        rd_kafka_conf_set_log_cb(conf, [](const rd_kafka_t*, int, const char*, const char*) {});
        m_handle = rd_kafka_new(RD_KAFKA_PRODUCER, conf, why, sizeof why);
        m_cluster = m_handle != nullptr ? rd_kafka_mock_cluster_new(m_handle, brokers) : nullptr;
        if (m_cluster == nullptr) {
            std::fprintf(stderr, "no cluster: %s\n", why);
            std::abort();
        }
    }
    ~KafkaMock()
    {
        rd_kafka_mock_cluster_destroy(m_cluster);
        rd_kafka_destroy(m_handle);
    }
    KafkaMock(const KafkaMock&) = delete;
    KafkaMock& operator=(const KafkaMock&) = delete;

    rd_kafka_mock_cluster_t* get() const { return m_cluster; }
    /// "127.0.0.1:40123,127.0.0.1:40124"
    std::string getBrokers() const { return rd_kafka_mock_cluster_bootstraps(m_cluster); }

private:
    rd_kafka_t* m_handle = nullptr;
    rd_kafka_mock_cluster_t* m_cluster = nullptr;
};

} // namespace vx
