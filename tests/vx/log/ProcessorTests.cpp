#include "Recording.h"
#include "tests/Threads.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/LogEntry.h"
#include "vx/log/Logger.h"
#include "vx/log/MultiProcessor.h"
#include "vx/log/SyncLogger.h"
#include "vx/sync/Semaphore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <thread>

namespace vx::log {
namespace {

constexpr int ENTRIES = 2'000;

Reference<LogEntry> entryOf(const String& text)
{
    const Reference<LogEntry> entry = LogEntry::create();
    entry->setField(u"text", new String(text));
    return entry;
}

/// Waits for a permit at each entry.
struct Gated : RecordingProcessor {
    void process(const ILogEntry* entry) override
    {
        m_entered.signal();
        m_permits.wait();
        RecordingProcessor::process(entry);
    }
    sync::Semaphore m_entered {0};
    sync::Semaphore m_permits {0};
};

/// Logs entries with these texts, each a word.
void put(AsyncProcessor& async, const char* words)
{
    std::istringstream texts(words);
    for (std::string text; texts >> text;)
        async.process(entryOf(String(text)).get());
}

TEST(AsyncProcessor, DrainsBesideAWorkerThatHoldsAnEntry)
{
    Reference<Gated> target(new Gated);
    {
        const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 1);
        put(*async, "a");
        target->m_entered.wait();
        put(*async, "b c");
        for (int permit = 0; permit < 3; ++permit)
            target->m_permits.signal();
    }
    while (target->texts().size() < 7)
        std::this_thread::yield();
    std::string texts = target->texts(); // in any order: a worker may hold one while the next is drained
    std::sort(texts.begin(), texts.end());
    EXPECT_EQ(texts, "  ;;abc");
}

struct Picky : RecordingProcessor {
    void process(const ILogEntry* entry) override
    {
        if (fieldOf(*entry, u"text") == "bad")
            throw RangeErrorException(u"bad");
        if (fieldOf(*entry, u"text") == "end")
            ::pthread_exit(nullptr);
        RecordingProcessor::process(entry);
    }
};

TEST(AsyncProcessor, LeavesToTheOtherWorkersWhatWaitsAfterAFailure)
{
    for (int round = 0; round < 100; ++round) {
        Reference<Picky> target(new Picky);
        {
            const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 2);
            put(*async, "bad a b c");
            ASSERT_FALSE(async->waitUntilDone()) << "one was thrown at, round " << round;
            ASSERT_EQ(target->entries().size(), 3U);
            ASSERT_TRUE(async->waitUntilDone()) << "which was told, round " << round;
        }
        while (target->GetRefCount() > 1) // a worker that waits ends as well
            std::this_thread::yield();
    }
}

TEST(AsyncProcessor, LosesAWorkerOnlyToAThrowingTargetUnlessItKeepsIt)
{
    struct {
        AsyncProcessor::Failures failures;
        const char* words;
        const char* texts;
        bool goesOn;
    } cases[] = {
        {AsyncProcessor::Failures::END_WORKER, "a b bad d e", "a; b", false},
        {AsyncProcessor::Failures::KEEP_WORKER, "a bad c bad", "a; c", true},
        {AsyncProcessor::Failures::KEEP_WORKER, "a end d e", "a", false},
    };
    for (const auto& row : cases) {
        Reference<Picky> target(new Picky);
        const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 1, row.failures);
        put(*async, row.words);
        EXPECT_FALSE(async->waitUntilDone()) << row.words;
        EXPECT_EQ(target->texts(), row.texts);
        if (row.goesOn) {
            put(*async, "e");
            EXPECT_TRUE(async->waitUntilDone());
            EXPECT_EQ(target->texts(), "a; c; e");
        }
    }
}

TEST(AsyncProcessor, PassesAllOnWhenTheDrainMeetsAFailure)
{
    Reference<Picky> target(new Picky);
    AsyncProcessor* async = AsyncProcessor::create(target.get(), 0).detach();
    put(*async, "a bad c");
    EXPECT_THROW(async->Release(), RangeErrorException);
    EXPECT_EQ(target->texts(), "a; c");
}

class Road : public testing::TestWithParam<int> { };

TEST_P(Road, DeliversEveryEntryOnce)
{
    constexpr int THREADS = 8;
    Reference<RecordingProcessor> target(new RecordingProcessor);
    const Reference<MultiProcessor> multi = MultiProcessor::create();
    multi->addProcessor(target.get());
    const Reference<Logger> logger = Logger::create();
    logger->enableField(u"sequence", true);
    Reference<AsyncProcessor> async = AsyncProcessor::create(multi.get(), GetParam());
    logger->addProcessor(async.get());
    Reference<SyncLogger> sync(new SyncLogger(logger.get()));
    inThreads(THREADS, [&](int thread) {
        for (int count = 0; count < ENTRIES; ++count)
            sync->log(thread, String::valueOf(count));
    });
    EXPECT_TRUE(async->waitUntilDone());

    ASSERT_EQ(target->entries().size(), static_cast<std::size_t>(THREADS) * ENTRIES);
    std::vector<char> seen(target->entries().size());
    std::vector<int> lastOfThread(THREADS, -1);
    for (std::size_t index = 0; index < seen.size(); ++index) {
        const ILogEntry& entry = *target->entries()[index];
        const auto sequence = static_cast<std::size_t>(std::stoi(fieldOf(entry, u"sequence")));
        ASSERT_LT(sequence, seen.size());
        ASSERT_EQ(seen[sequence]++, 0) << sequence;
        if (GetParam() == 1) {
            ASSERT_EQ(sequence, index);
            const auto thread = static_cast<std::size_t>(std::stoi(fieldOf(entry, u"level")));
            const int text = std::stoi(fieldOf(entry, u"text"));
            ASSERT_EQ(text, ++lastOfThread[thread]);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AsyncProcessor, Road, testing::Values(1, 4));

} // namespace
} // namespace vx::log
