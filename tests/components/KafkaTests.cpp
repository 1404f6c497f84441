#include "components/kafka/IVXKafka.h"
#include "tests/components/KafkaMock.h"
#include "tests/components/LoadedLibrary.h"
#include "vx/Describe.h"
#include "vx/Exception.h"
#include "vx/util/PropertySet.h"
#include "vx/vorb/FailureText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace vx {
namespace {

using namespace std::string_literals;

using components::IVXKafka;
using components::IVXKafkaConsumer;
using components::IVXKafkaProducer;
using components::KafkaMessage;

constexpr _GUID KAFKA_CLASS {0x448570A7, 0x2100, 0x43F5, {0x9E, 0x8E, 0x9D, 0x36, 0x48, 0x71, 0x1A, 0x6A}};
using Properties = std::map<std::string, std::string>;
constexpr int PATIENCE = 60'000;
constexpr int LINES = 2000;

std::ptrdiff_t countThreads()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

std::string textFrom(const std::function<std::int32_t(IVXCharBuffer*)>& get)
{
    const Reference<String> text(new String);
    EXPECT_EQ(get(text.get()), RESULT_OK);
    return text->toUtf8();
}

/// The first text that is only in one of them. Neither order nor repetition is compared: unlike a broker, the mock does
/// not look at the numbers of batches, so it also takes those after one that it has refused, and those that come again.
std::string describeDifference(const std::vector<std::string>& found, const std::vector<std::string>& sent)
{
    const std::set<std::string> there(found.begin(), found.end()), wanted(sent.begin(), sent.end());
    std::vector<std::string> different;
    std::ranges::set_symmetric_difference(there, wanted, std::back_inserter(different));
    return different.empty() ? "" : std::to_string(different.size()) + " differ, such as " + different.front();
}

Reference<const util::vorb::IPropertySet> vorbOf(const Properties& properties)
{
    util::PropertySet set;
    for (const auto& [key, value] : properties)
        set.set(String(key), String(value));
    return util::PropertySet::getVorb(set);
}

class KafkaComponent : public testing::Test {
protected:
    Properties properties(Properties more = {}) const
    {
        more.insert({{"brokers", m_mock.getBrokers()}, {"topic", "logs"}});
        return more;
    }
    Reference<IVXKafka> kafka() const
    {
        Reference<IVXKafka> made;
        EXPECT_EQ(creatorOf(m_library, KAFKA_CLASS)()->QueryInterface(IVXKafka::IID, made.outVoid()), RESULT_OK);
        return made;
    }
    Reference<IVXKafkaProducer> producer(const Properties& set, int waits = 1) const
    {
        const Reference<IVXKafka> factory = kafka();
        Reference<IVXKafkaProducer> made;
        vorb::throwIfFailedIn(
            *factory, factory->CreateProducer(vorbOf(set).get(), waits, IVXKafkaProducer::IID, made.outVoid()));
        return made;
    }
    static std::int32_t send(IVXKafkaProducer& producer, const std::string& text)
    {
        const auto* const bytes = reinterpret_cast<const signed char*>(text.data());
        const KafkaMessage message {bytes, bytes, 1, static_cast<std::int32_t>(text.size())};
        return producer.Send(&message);
    }
    /// What the topic holds now.
    std::vector<std::string> read(const Properties& set) const
    {
        const Reference<IVXKafka> factory = kafka();
        Reference<IVXKafkaConsumer> consumer;
        vorb::throwIfFailedIn(
            *factory, factory->CreateConsumer(vorbOf(set).get(), IVXKafkaConsumer::IID, consumer.outVoid()));
        std::vector<std::string> texts;
        for (std::int32_t state = 0; state != IVXKafkaConsumer::END;) {
            KafkaMessage message {};
            vorb::throwIfFailedIn(*consumer, consumer->Read(&message, &state, PATIENCE));
            if (state == IVXKafkaConsumer::MESSAGE)
                texts.emplace_back(
                    reinterpret_cast<const char*>(message.value), static_cast<std::size_t>(message.valueLength));
        }
        return texts;
    }

    const KafkaMock m_mock {3};
    const LoadedLibrary m_library {COMPONENTS "/vxkafka.so"};
};

/// Messages are sent from one state of the cluster into the next one.
TEST_F(KafkaComponent, LosesNothing)
{
    rd_kafka_mock_cluster_t* const mock = m_mock.get();
    ASSERT_EQ(rd_kafka_mock_topic_create(mock, "logs", 1, 3), RD_KAFKA_RESP_ERR_NO_ERROR);
    constexpr std::int16_t PRODUCE = 0;
    const std::vector<std::function<void()>> events {
        [&] { rd_kafka_mock_partition_set_leader(mock, "logs", 0, 2); },
        [&] { rd_kafka_mock_broker_set_rtt(mock, 2, 200); },
        [&] {
            rd_kafka_mock_push_request_errors(mock, PRODUCE, 4, RD_KAFKA_RESP_ERR_NOT_LEADER_FOR_PARTITION,
                RD_KAFKA_RESP_ERR_NOT_ENOUGH_REPLICAS, RD_KAFKA_RESP_ERR_REQUEST_TIMED_OUT,
                RD_KAFKA_RESP_ERR_NOT_LEADER_FOR_PARTITION);
        },
        [&] {
            // The producer gives these messages back, and they have to be sent again.
            rd_kafka_mock_push_request_errors(mock, PRODUCE, 1, RD_KAFKA_RESP_ERR_TOPIC_AUTHORIZATION_FAILED);
        },
        [&] { // after that, no producer may go on with its numbers
            rd_kafka_mock_push_request_errors(mock, PRODUCE, 1, RD_KAFKA_RESP_ERR_OUT_OF_ORDER_SEQUENCE_NUMBER);
        },
        [&] {
            for (const int broker : {1, 2, 3})
                rd_kafka_mock_broker_set_down(mock, broker);
        },
        [&] {
            for (const int broker : {1, 2, 3})
                rd_kafka_mock_broker_set_up(mock, broker);
        },
    };
    const Reference<IVXKafkaProducer> sender = producer(properties());
    std::vector<std::string> sent;
    std::size_t reported = 0;
    std::int32_t results[64];
    const auto take = [&](int milliseconds) {
        std::int32_t count = std::size(results);
        ASSERT_EQ(sender->TakeReports(results, &count, milliseconds), RESULT_OK);
        for (std::int32_t index = 0; index < count; ++index)
            EXPECT_EQ(results[index], RESULT_OK);
        reported += static_cast<std::size_t>(count);
    };
    for (const std::function<void()>& event : events) {
        for (int line = 0; line < LINES; ++line) {
            const std::string text = "line " + std::to_string(sent.size());
            ASSERT_EQ(send(*sender, text), RESULT_OK);
            sent.push_back(text);
            if (line == LINES / 2)
                event();
            take(0);
        }
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(PATIENCE);
    while (reported < sent.size() && std::chrono::steady_clock::now() < end)
        take(1000);
    EXPECT_EQ(reported, sent.size());
    EXPECT_EQ(textFrom([&](IVXCharBuffer* text) { return sender->GetTrouble(text); }), "");
    EXPECT_EQ(describeDifference(read(properties()), sent), "");
}

TEST_F(KafkaComponent, HoldsNoMoreThanItMay)
{
    for (const int broker : {1, 2, 3})
        rd_kafka_mock_broker_set_down(m_mock.get(), broker);
    const Reference<IVXKafkaProducer> sender = producer(properties({{"queueMessages", "5"}, {"queueBytes", "20"}}), 0);
    EXPECT_EQ(send(*sender, std::string(100, 'x')), RESULT_OK); // alone, it may be larger
    EXPECT_EQ(send(*sender, "y"), RESULT_NOT_AVAILABLE);
    EXPECT_EQ(sender->Flush(1500), RESULT_TIMED_OUT);
    const std::string trouble = textFrom([&](IVXCharBuffer* text) { return sender->GetTrouble(text); });
    EXPECT_NE(trouble.find("no broker can be reached"), std::string::npos) << trouble;
    EXPECT_NE(trouble.find("onnection refused"), std::string::npos) << trouble;
    for (const int broker : {1, 2, 3})
        rd_kafka_mock_broker_set_up(m_mock.get(), broker);
    EXPECT_EQ(sender->Flush(PATIENCE), RESULT_OK);
    std::int32_t result = 1, count = 1;
    EXPECT_EQ(sender->TakeReports(&result, &count, 0), RESULT_OK);
    EXPECT_EQ(std::make_pair(result, count), std::make_pair(RESULT_OK, 1));
    for (int message = 0; message < 5; ++message)
        EXPECT_EQ(send(*sender, "z"), RESULT_OK);
    EXPECT_EQ(send(*sender, "z"), RESULT_NOT_AVAILABLE);
}

TEST_F(KafkaComponent, RefusesOnlyWhatIsTooLarge)
{
    rd_kafka_mock_push_request_errors(m_mock.get(), 0, 1, RD_KAFKA_RESP_ERR_MSG_SIZE_TOO_LARGE);
    const Reference<IVXKafkaProducer> sender = producer(properties());
    std::vector<std::int32_t> results(3, 1);
    EXPECT_EQ(send(*sender, "too large for the broker"), RESULT_OK);
    EXPECT_EQ(sender->Flush(PATIENCE), RESULT_OK);
    EXPECT_EQ(send(*sender, std::string(2'000'000, 'x')), RESULT_OK);
    EXPECT_EQ(send(*sender, "small"), RESULT_OK);
    EXPECT_EQ(sender->Flush(PATIENCE), RESULT_OK);
    auto count = static_cast<std::int32_t>(results.size());
    EXPECT_EQ(sender->TakeReports(results.data(), &count, 0), RESULT_OK);
    EXPECT_EQ(results, (std::vector {RESULT_INVALID_ARGUMENT, RESULT_INVALID_ARGUMENT, RESULT_OK}));
    try {
        vorb::throwIfFailedIn(*sender, results[0]);
        FAIL();
    } catch (const Exception& failure) {
        const std::string text = failure.getDescription().toUtf8();
        EXPECT_NE(text.find("topic logs at 127.0.0.1"), std::string::npos) << text;
        EXPECT_NE(text.find("a message is larger than it accepts (24 bytes)"), std::string::npos) << text;
    }
    EXPECT_EQ(read(properties()), std::vector {"small"s});
}

TEST_F(KafkaComponent, SaysWhatIsWrong)
{
    rd_kafka_mock_topic_set_error(m_mock.get(), "missing", RD_KAFKA_RESP_ERR_UNKNOWN_TOPIC_OR_PART);
    rd_kafka_mock_topic_set_error(m_mock.get(), "secret", RD_KAFKA_RESP_ERR_TOPIC_AUTHORIZATION_FAILED);
    const struct {
        Properties properties;
        std::int32_t result;
        const char* text;
    } cases[] {
        {{{"topic", "missing"}}, RESULT_NOT_FOUND, "topic missing at 127.0.0.1"},
        {{{"topic", "secret"}}, RESULT_ACCESS_DENIED, "may not use it"},
        {{{"brokers", "127.0.0.1:1"}}, RESULT_TIMED_OUT, "127.0.0.1:1"},
        {{{"brokers", "no-such-host.invalid:1"}}, RESULT_TIMED_OUT, "no-such-host.invalid"},
        {{{"timeout", "soon"}}, RESULT_INVALID_ARGUMENT, "timeout is no such number: soon"},
        {{{"compression", "zip"}}, RESULT_INVALID_ARGUMENT, "compression"},
        {{{"encrypted", "1"}, {"ca", "/dev/null"}}, RESULT_INVALID_ARGUMENT, "is no text for ca"},
        {{{"user", "ada"}}, RESULT_INVALID_ARGUMENT, "passwordFile"},
        {{{"user", "ada"}, {"passwordFile", "/no/such/file"}}, RESULT_NOT_FOUND, ""},
    };
    for (const auto& each : cases) {
        try {
            producer(properties(each.properties));
            ADD_FAILURE() << each.text;
        } catch (const Exception& failure) {
            const std::string text = failure.getDescription().toUtf8();
            EXPECT_EQ(failure.getResult(), each.result) << text;
            EXPECT_NE(text.find(each.text), std::string::npos) << text;
        }
    }
}

TEST_F(KafkaComponent, LeavesNoThread)
{
    const std::ptrdiff_t before = countThreads();
    Reference<IVXKafkaProducer> sender = producer(properties());
    EXPECT_EQ(send(*sender, "never flushed"), RESULT_OK);
    EXPECT_GT(countThreads(), before);
    sender = nullptr;
    EXPECT_EQ(read(properties()).size(), 0U);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(PATIENCE);
    while (countThreads() != before && std::chrono::steady_clock::now() < end)
        std::this_thread::yield(); // the system lists a joined thread for a moment
    EXPECT_EQ(countThreads(), before);
}

} // namespace
} // namespace vx
