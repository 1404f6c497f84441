#include "Recording.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/LogEntry.h"
#include "vx/log/Logger.h"
#include "vx/log/MultiProcessor.h"
#include "vx/log/SyncLogger.h"
#include "vx/sync/Semaphore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace vx::log {
namespace {

constexpr int ENTRIES = 2'000;

Reference<LogEntry> entryOf(const char16_t* text)
{
    const Reference<LogEntry> entry = LogEntry::create();
    entry->setField(u"text", new String(text));
    return entry;
}

/// Waits for a permit at each entry.
class Gated : public RecordingProcessor {
public:
    void process(const ILogEntry* entry) override
    {
        m_entered.signal();
        m_permits.wait();
        RecordingProcessor::process(entry);
    }
    sync::Semaphore m_entered {0};
    sync::Semaphore m_permits {0};
};

TEST(AsyncProcessor, DrainsBesideAWorkerThatHoldsAnEntry)
{
    Reference<Gated> target(new Gated);
    {
        const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 1);
        async->process(entryOf(u"a").get());
        target->m_entered.wait();
        for (const char16_t* text : {u"b", u"c"})
            async->process(entryOf(text).get());
        for (int permit = 0; permit < 3; ++permit)
            target->m_permits.signal();
    }
    while (target->texts().size() < 7)
        std::this_thread::yield();
    std::string texts = target->texts(); // in any order: a worker may hold one while the next is drained
    std::sort(texts.begin(), texts.end());
    EXPECT_EQ(texts, "  ;;abc");
}

TEST(AsyncProcessor, LosesAWorkerToAThrowingTargetAndNoOtherEntry)
{
    Reference<RecordingProcessor> target(new RecordingProcessor(2));
    const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 1);
    for (const char16_t* text : {u"a", u"b", u"thrown at", u"d", u"e"})
        async->process(entryOf(text).get());
    EXPECT_FALSE(async->waitUntilDone()) << "the worker has ended";
    EXPECT_EQ(target->texts(), "a; b");
}

class Picky : public RecordingProcessor {
public:
    void process(const ILogEntry* entry) override
    {
        if (fieldOf(*entry, u"text") == "bad")
            throw RangeErrorException(u"bad");
        RecordingProcessor::process(entry);
    }
};

TEST(AsyncProcessor, LeavesToTheOtherWorkersWhatWaitsBehindAFailure)
{
    for (int round = 0; round < 100; ++round) {
        Reference<Picky> target(new Picky);
        {
            const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 2);
            for (const char16_t* text : {u"bad", u"a", u"b", u"c"})
                async->process(entryOf(text).get());
            ASSERT_FALSE(async->waitUntilDone()) << "one was thrown at, round " << round;
            ASSERT_EQ(target->entries().size(), 3U);
            ASSERT_TRUE(async->waitUntilDone()) << "which was told, round " << round;
        }
        while (target->GetRefCount() > 1) // a worker that waits ends as well
            std::this_thread::yield();
    }
}

TEST(AsyncProcessor, KeepsItsWorkerWhenAsked)
{
    Reference<Picky> target(new Picky);
    const Reference<AsyncProcessor> async
        = AsyncProcessor::create(target.get(), 1, AsyncProcessor::Failures::KEEP_WORKER);
    for (const char16_t* text : {u"a", u"bad", u"c", u"bad"})
        async->process(entryOf(text).get());
    EXPECT_FALSE(async->waitUntilDone()) << "the last one failed";
    EXPECT_EQ(target->texts(), "a; c");
    async->process(entryOf(u"e").get());
    EXPECT_TRUE(async->waitUntilDone());
    EXPECT_EQ(target->texts(), "a; c; e");
}

TEST(AsyncProcessor, HandsOverAllWhenTheDrainMeetsAFailure)
{
    Reference<Picky> target(new Picky);
    AsyncProcessor* async = AsyncProcessor::create(target.get(), 0).detach();
    for (const char16_t* text : {u"a", u"bad", u"c"})
        async->process(entryOf(text).get());
    EXPECT_THROW(async->Release(), RangeErrorException);
    EXPECT_EQ(target->texts(), "a; c");
}

void logFromManyThreads(ILevelLogger* logger, int threads, int each)
{
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread)
        running.emplace_back([=] {
            for (int count = 0; count < each; ++count)
                logger->log(thread, String::valueOf(count));
        });
    for (std::thread& thread : running)
        thread.join();
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
    logFromManyThreads(sync.get(), THREADS, ENTRIES);
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
