#include "Recording.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/LogEntry.h"
#include "vx/log/LogFilter.h"
#include "vx/log/Logger.h"
#include "vx/log/MultiProcessor.h"
#include "vx/log/SyncLogger.h"
#include "vx/sync/Semaphore.h"

#include <atomic>
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

/// Waits for a permission before each entry.
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

/// Logs an entry for each word of a text.
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
    std::string texts = target->texts(); // a worker may be late, so the order is open
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

/// What a policy leaves of the words of a caller while the only worker holds the first of them.
TEST(AsyncProcessor, KeepsItsQueueWithinLimits)
{
    constexpr std::int64_t ANY = 0;
    const auto ask = [](const ILogEntry& entry) {
        if (fieldOf(entry, u"text") == "bad")
            throw RangeErrorException(u"bad");
        return fieldOf(entry, u"text") == "new" ? WhenFull::DROP_OLDEST : WhenFull::DROP_NEWEST;
    };
    const std::string longWord(10'000, 'x');
    const struct {
        std::int64_t entries;
        std::int64_t bytes;
        WhenFull whenFull;
        std::function<WhenFull(const ILogEntry&)> onFull;
        std::string words;
        std::string texts;
        std::string dropped; ///< of which only the first is told
    } cases[] = {
        {2, ANY, WhenFull::DROP_NEWEST, {}, "a b c d e", "a; b; c", "d"},
        {2, ANY, WhenFull::DROP_OLDEST, {}, "a b c d e", "a; d; e", "b"},
        {2, ANY, WhenFull::WAIT, ask, "a b c d new f", "a; c; new", "d"},
        {ANY, 5'000, WhenFull::DROP_NEWEST, {}, "a b " + longWord + " d", "a; b; d", longWord},
        {ANY, 5'000, WhenFull::DROP_OLDEST, {}, "a b c " + longWord, "a; " + longWord, "b"},
    };
    for (const auto& row : cases) {
        Reference<Gated> target(new Gated);
        std::string dropped;
        AsyncOptions options;
        options.mostEntries = row.entries;
        options.mostBytes = row.bytes;
        options.whenFull = row.whenFull;
        options.onFull = row.onFull;
        options.onDrop = [&dropped](const ILogEntry& entry) { dropped += fieldOf(entry, u"text"); };
        const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), options);
        put(*async, row.words.substr(0, 1).c_str());
        target->m_entered.wait();
        put(*async, row.words.substr(1).c_str());
        if (row.onFull != nullptr) {
            EXPECT_THROW(put(*async, "bad"), RangeErrorException);
        }
        const AsyncCounts full = async->getCounts();
        for (std::size_t permit = 0; permit < row.words.size(); ++permit)
            target->m_permits.signal();

        EXPECT_FALSE(async->waitUntilDone()) << "entries were dropped";
        EXPECT_TRUE(async->waitUntilDone()) << "which was told";
        EXPECT_EQ(target->texts(), row.texts);
        EXPECT_EQ(dropped, row.dropped);
        const AsyncCounts end = async->getCounts();
        EXPECT_EQ(end.received, end.processed + end.dropped);
        EXPECT_EQ(end.processed, static_cast<std::int64_t>(target->entries().size()));
        EXPECT_EQ(full.queued, end.processed - 1);
        EXPECT_LE(end.deepest, row.entries == ANY ? 3 : row.entries);
        EXPECT_GE(end.deepest, full.queued);
    }
}

/// Logs its first entry again, into the processor that it belongs to.
struct Echo : Gated {
    void process(const ILogEntry* entry) override
    {
        Gated::process(entry);
        if (AsyncProcessor* const async = std::exchange(m_async, nullptr))
            async->process(entry);
    }
    AsyncProcessor* m_async = nullptr;
};

TEST(AsyncProcessor, DoesNotWaitForAWorkerThatCannotCome)
{
    AsyncOptions options;
    options.mostEntries = 1;
    Reference<Echo> echo(new Echo);
    Reference<AsyncProcessor> async = AsyncProcessor::create(echo.get(), options);
    echo->m_async = async.get();
    put(*async, "a");
    echo->m_entered.wait();
    put(*async, "b");
    echo->m_permits.signal(); // a is logged while b waits
    echo->m_entered.wait();
    EXPECT_EQ(async->getCounts().dropped, 1);
    for (int permit = 0; permit < 3; ++permit)
        echo->m_permits.signal();
    async = nullptr;

    Reference<Picky> picky(new Picky);
    async = AsyncProcessor::create(picky.get(), options);
    put(*async, "end");
    EXPECT_FALSE(async->waitUntilDone());
    put(*async, "a b");
    EXPECT_EQ(async->getCounts().dropped, 1) << "no worker is left";
    async = nullptr;
    EXPECT_EQ(picky->texts(), "a");

    for (AsyncOptions wrong : {AsyncOptions {.threads = 0, .mostEntries = 1}, AsyncOptions {.mostEntries = -1},
             AsyncOptions {.mostBytes = -1}, AsyncOptions {.tries = 0}})
        EXPECT_THROW(AsyncProcessor::create(picky.get(), wrong), ResultException);
}

/// Throws at each entry as often as its text says.
struct Unwilling : RecordingProcessor {
    void process(const ILogEntry* entry) override
    {
        const int refusals = std::stoi(fieldOf(*entry, u"text"));
        {
            const sync::ScopedLock lock(m_lock);
            m_kept.emplace_back(entry);
            if (++m_tries[entry] <= refusals)
                throw RangeErrorException(u"not yet");
        }
        RecordingProcessor::process(entry);
    }
    bool hasTried(std::size_t entries)
    {
        const sync::ScopedLock lock(m_lock);
        return m_tries.size() >= entries;
    }
    sync::Mutex m_lock;
    std::map<const ILogEntry*, int> m_tries;
    std::vector<Reference<const ILogEntry>> m_kept; ///< no two entries share an address
};

TEST(AsyncProcessor, TriesAgainAndReportsWhatItGivesUp)
{
    Reference<Unwilling> target(new Unwilling);
    std::string given;
    AsyncOptions options;
    options.tries = 3;
    options.firstPause = 1;
    options.onFailure = [&given](const ILogEntry& entry, const std::exception_ptr& failure) {
        EXPECT_THROW(std::rethrow_exception(failure), RangeErrorException);
        given += fieldOf(entry, u"text");
        throw RangeErrorException(u"the report fails as well");
    };
    Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), options);
    put(*async, "0 2 3 1");
    EXPECT_FALSE(async->waitUntilDone());
    EXPECT_EQ(target->texts(), "0; 2; 1");
    EXPECT_EQ(given, "3");
    EXPECT_EQ(async->getCounts().failed, 1);

    options.tries = 1'000'000;
    options.firstPause = options.longestPause = 1'000'000;
    async = AsyncProcessor::create(target.get(), options);
    put(*async, "1 7 7");
    while (!target->hasTried(5)) // then the worker pauses
        std::this_thread::yield();
    async = nullptr; // ends the pause
    while (target->GetRefCount() > 1)
        std::this_thread::yield();
    EXPECT_EQ(target->texts(), "0; 2; 1; 1");
    EXPECT_EQ(given, "377");
}

TEST(LogFilter, LetsPassWhatItsSettingsAllow)
{
    constexpr std::int32_t MIN = INT32_MIN, MAX = INT32_MAX;
    const std::vector<LogFilter::Rule> noRules;
    const std::vector<LogFilter::Rule> rules = {{u"db.*", 2, 3}, {u"*.s?l*end", MIN, 1}, {u"", 4, MAX}, {u"**", 3, 3}};
    const struct {
        std::int32_t lowest;
        std::int32_t highest;
        const std::vector<LogFilter::Rule>& rules;
        std::string texts; ///< name and level
    } cases[] = {
        {MIN, MAX, noRules, "0; 4; db.1; db.3; db3; x.sql.the.end1; x.sqlend2; x.slend1"},
        {1, 3, noRules, "db.1; db.3; db3; x.sql.the.end1; x.sqlend2; x.slend1"},
        {MIN, MAX, rules, "4; db.3; db3; x.sql.the.end1"},
        {MIN, 2, rules, "x.sql.the.end1"},
    };
    for (const auto& row : cases) {
        Reference<RecordingProcessor> target(new RecordingProcessor);
        const Reference<LogFilter> filter = LogFilter::create(target.get());
        filter->setRules(rules);
        filter->setRules(row.rules);
        filter->setLevels(row.lowest, row.highest);
        for (const auto& [name, level] : {std::pair(u"", 0), {u"", 4}, {u"db.", 1}, {u"db.", 3}, {u"db", 3},
                 {u"x.sql.the.end", 1}, {u"x.sqlend", 2}, {u"x.slend", 1}}) {
            const String text = String(name) + String::valueOf(level);
            const Reference<Logger> logger(*name == u'\0' ? new Logger : new Logger(name));
            logger->addProcessor(filter.get());
            logger->log(level, text);
        }
        EXPECT_EQ(target->texts(), row.texts);
        filter->process(entryOf(u"neither level nor name").get());
        EXPECT_EQ(target->entries().back()->hasField(u"level"), row.lowest > 0 || !row.rules.empty());
    }
}

TEST(AsyncProcessor, KnowsTheLargestNumberThatWaited)
{
    Reference<Gated> target(new Gated);
    const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 1);
    const struct {
        const char* words;
        int taken; ///< in all, before the next words
        std::int64_t deepest;
    } steps[] = {{"a", 1, 1}, {"b c d e f", 4, 5}, {"g h", 4, 5}, {"i j", 9, 6}, {"k l m", 9, 6}, {"n o p q", 17, 8}};
    int taken = 0;
    for (const auto& step : steps) {
        put(*async, step.words);
        EXPECT_EQ(async->getCounts().deepest, step.deepest) << step.words;
        for (; taken < step.taken; ++taken) {
            if (taken > 0)
                target->m_permits.signal();
            target->m_entered.wait();
        }
    }
    target->m_permits.signal();
}

TEST(AsyncProcessor, HoldsTheLastEntryOfAWorkerUntilTheNext)
{
    const Reference<LogEntry> entries[] = {entryOf(u"first"), entryOf(u"second"), entryOf(u"third")};
    struct Counter : RecordingProcessor {
        explicit Counter(const Reference<LogEntry>* entries)
            : all(entries)
        {
        }
        void process(const ILogEntry*) override
        {
            for (int i = 0; i < 3; ++i)
                counts << all[i]->GetRefCount() << (i < 2 ? " " : "; ");
        }
        const Reference<LogEntry>* all;
        std::ostringstream counts;
    };
    const Reference<Counter> target(new Counter(entries));
    const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), 1);
    for (const auto& entry : entries) {
        async->process(entry.get());
        ASSERT_TRUE(async->waitUntilDone());
    }
    EXPECT_EQ(target->counts.str(), "2 1 1; 1 2 1; 1 1 2; ");
    EXPECT_EQ(entries[2]->GetRefCount(), 2U);
}

class Road : public testing::TestWithParam<int> { };

/// Some texts exceed the limit on bytes alone, and callers wait for room.
TEST_P(Road, DeliversEveryEntryOnce)
{
    constexpr int CALLERS = 6;
    Reference<RecordingProcessor> target(new RecordingProcessor);
    const Reference<MultiProcessor> multi = MultiProcessor::create();
    multi->addProcessor(target.get());
    const Reference<Logger> logger = Logger::create();
    logger->enableField(u"sequence", true);
    AsyncOptions options;
    options.threads = GetParam();
    options.mostEntries = 3;
    options.mostBytes = 3'000;
    const Reference<AsyncProcessor> async = AsyncProcessor::create(multi.get(), options);
    logger->addProcessor(async.get());
    Reference<SyncLogger> sync(new SyncLogger(logger.get()));
    inThreads(CALLERS, [&](int caller) {
        for (int count = 0; count < ENTRIES; ++count)
            sync->log(caller, String::valueOf(count) + String(u' ', caller * 300));
    });
    EXPECT_TRUE(async->waitUntilDone());
    EXPECT_LE(async->getCounts().deepest, 3);

    ASSERT_EQ(target->entries().size(), static_cast<std::size_t>(CALLERS) * ENTRIES);
    std::vector<char> seen(target->entries().size());
    std::vector<int> lastOfCaller(CALLERS, -1);
    for (std::size_t index = 0; index < seen.size(); ++index) {
        const ILogEntry& entry = *target->entries()[index];
        const auto sequence = static_cast<std::size_t>(std::stoi(fieldOf(entry, u"sequence")));
        ASSERT_LT(sequence, seen.size());
        ASSERT_EQ(seen[sequence]++, 0) << sequence;
        if (GetParam() == 1) {
            ASSERT_EQ(sequence, index);
            int& last = lastOfCaller[static_cast<std::size_t>(std::stoi(fieldOf(entry, u"level")))];
            ASSERT_EQ(std::stoi(fieldOf(entry, u"text")), ++last);
        }
    }
}

/// The memory of an entry is used for a new one only if nothing holds a reference to the old one.
TEST_P(Road, LeavesAloneTheEntriesThatAreHeld)
{
    constexpr int CALLERS = 4;
    struct Keeper : Object, ILogProcessor {
        VX_OBJECT_UNKNOWN(Object)
        void process(const ILogEntry* entry) override
        {
            const std::string number = fieldOf(*entry, u"text").substr(0, 5);
            const int value = std::stoi(number);
            m_sum += value;
            if (value % 7 == 0) {
                const sync::ScopedLock lock(m_lock);
                m_kept.emplace_back(number, entry);
            }
        }
        std::atomic<std::int64_t> m_sum {0};
        sync::Mutex m_lock;
        std::vector<std::pair<std::string, Reference<const ILogEntry>>> m_kept;
    };
    Reference<Keeper> target(new Keeper);
    const Reference<AsyncProcessor> async = AsyncProcessor::create(target.get(), GetParam());
    inThreads(CALLERS, [&](int caller) {
        const Reference<Logger> logger = Logger::create();
        logger->addProcessor(async.get());
        for (int count = 0; count < ENTRIES; ++count)
            logger->log(0, String::valueOf(10'000 * (caller + 1) + count) + String(u' ', count % 400));
    });
    EXPECT_TRUE(async->waitUntilDone());
    std::int64_t sum = 0, kept = 0;
    for (int caller = 0; caller < CALLERS; ++caller) {
        for (int count = 0; count < ENTRIES; ++count) {
            const int value = 10'000 * (caller + 1) + count;
            sum += value;
            kept += value % 7 == 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(target->m_sum, sum);
    EXPECT_EQ(static_cast<std::int64_t>(target->m_kept.size()), kept);
    for (const auto& [number, entry] : target->m_kept)
        ASSERT_EQ(fieldOf(*entry, u"text").substr(0, 5), number);
}

INSTANTIATE_TEST_SUITE_P(AsyncProcessor, Road, testing::Values(1, 4));

} // namespace
} // namespace vx::log
