#pragma once

#include <vx/util/ICharBuffer.h>
#include <vx/util/vorb/IPropertySet.h>

#include <cstdint>

namespace vx::components {

// Messages to and from a topic of a Kafka cluster. These interfaces are those of the component "Velmaris.Kafka". All
// objects have `vx::vorb::IVXFailureText`, and are for one thread at a time.

/// A message. Its bytes belong to the one who passes it on.
struct KafkaMessage {
    const signed char* key; ///< messages with the same key keep their order; null for none
    const signed char* value;
    std::int32_t keyLength;
    std::int32_t valueLength;
};

/// Sends messages to one topic. Each is acknowledged by all replicas of its partition, and a repeated try does not
/// double it. A message that fails is tried again for as long as the producer exists, unless it can never succeed.
///
/// The program calls `TakeReports` at least once a second: all work of the producer is done there, except for sending.
class IVXKafkaProducer : public IVXUnknown {
public:
    using InterfaceType = IVXKafkaProducer;
    static constexpr _GUID IID {0xCADA3431, 0x375F, 0x4559, {0x9A, 0x54, 0x53, 0x5A, 0xD2, 0x57, 0xE4, 0x10}};

    /// Puts a copy of a message into the queue. RESULT_NOT_AVAILABLE if there is no room at the moment.
    virtual std::int32_t Send(const KafkaMessage* message) = 0;
    /// Gives the results of messages, in the order of `Send`; waits for the first of them. RESULT_OK means that the
    /// brokers have the message. With another result it will never be there, and the failure text tells why the first
    /// one failed. `*count` is the room in `results`, and becomes the number of results.
    virtual std::int32_t TakeReports(std::int32_t* results, std::int32_t* count, std::int32_t milliseconds) = 0;
    /// Writes to this descriptor, which is that of an eventfd, when there is something to do for `TakeReports`.
    virtual std::int32_t SetWake(std::int32_t descriptor) = 0;
    /// Waits until the brokers have all messages, whose results are still to be taken. RESULT_TIMED_OUT if some are
    /// missing.
    virtual std::int32_t Flush(std::int32_t milliseconds) = 0;
    /// The number of messages whose results were not taken.
    virtual std::int32_t GetPending(std::int32_t* count) = 0;
    /// Why messages have to wait at the moment, on one line; empty if they do not.
    virtual std::int32_t GetTrouble(IVXCharBuffer* text) = 0;

protected:
    ~IVXKafkaProducer() = default;
};

/// Reads the messages of all partitions of one topic, from the oldest on. Messages of one partition keep their order.
class IVXKafkaConsumer : public IVXUnknown {
public:
    using InterfaceType = IVXKafkaConsumer;
    static constexpr _GUID IID {0x3C256EFB, 0xDF01, 0x4F39, {0x82, 0x1C, 0x50, 0x7E, 0x91, 0xFA, 0x36, 0x05}};

    enum State : std::int32_t {
        MESSAGE,
        NOTHING, ///< the time is over, or there is a change of state
        END, ///< all messages that the topic has at the moment were read
    };
    /// Waits for a message, whose bytes are valid until the next call.
    virtual std::int32_t Read(KafkaMessage* message, std::int32_t* state, std::int32_t milliseconds) = 0;
    /// As above.
    virtual std::int32_t GetTrouble(IVXCharBuffer* text) = 0;

protected:
    ~IVXKafkaConsumer() = default;
};

/// Creates producers and consumers. The properties:
///
/// - "brokers": "HOST:PORT" of some brokers, with commas between them. "topic": the name of the topic.
/// - "timeout": milliseconds until the creation fails if no broker answers (30000).
/// - "encrypted": "1" for TLS. "ca": the file with the authorities of the brokers (those of the system). "cert", "key":
///   files with the certificate of this side and its key.
/// - "user", "passwordFile": the user, and a file with the password on its first line. "mechanism": PLAIN,
///   SCRAM-SHA-256 or SCRAM-SHA-512 (the last one).
/// - "queueMessages", "queueBytes": the most that a producer holds (100000, 33554432).
/// - "compression": none, gzip, lz4, snappy or zstd (lz4).
///
/// The creation asks the brokers for the topic. RESULT_TIMED_OUT if none answers, RESULT_NOT_FOUND if the topic does
/// not exist, RESULT_ACCESS_DENIED if the user is refused.
class IVXKafka : public IVXUnknown {
public:
    using InterfaceType = IVXKafka;
    static constexpr _GUID IID {0xD85B61B8, 0x7559, 0x463A, {0xB5, 0xBD, 0x9B, 0xF9, 0x9D, 0x88, 0xFD, 0x95}};

    /// The result is `IVXKafkaProducer`, for example. `waits` is 0 for one that does not ask for the topic: its
    /// messages wait for the brokers.
    virtual std::int32_t CreateProducer(
        const util::vorb::IPropertySet* properties, std::int32_t waits, const _GUID& iid, void** result)
        = 0;
    /// The result is `IVXKafkaConsumer`, for example.
    virtual std::int32_t CreateConsumer(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
        = 0;

protected:
    ~IVXKafka() = default;
};

} // namespace vx::components
