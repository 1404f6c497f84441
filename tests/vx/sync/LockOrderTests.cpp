#include "tests/Threads.h"
#include "vx/exec/Process.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/ScopedLock.h"
#include "vx/sync/Semaphore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

// ThreadSanitizer would report the orders too, and fail.
extern "C" VXSYS_API const char* __tsan_default_options();
extern "C" const char* __tsan_default_options()
{
    return "detect_deadlocks=0";
}

namespace vx::sync {
namespace {

const std::string TITLE = "vxlib4: locks are acquired in two orders, which can become a deadlock:\n";

/// Checks the order of locks as long as it exists.
struct Checked {
    Checked()
    {
        VXLockOrderStart([](const char* text, void* self) { static_cast<Checked*>(self)->reports += text; }, this);
    }
    ~Checked() { VXLockOrderStop(); }

    /// The reports since the last call, without the numbers of the threads.
    std::string take()
    {
        std::string text = std::exchange(reports, {});
        const auto lines = text.begin() + static_cast<std::ptrdiff_t>(std::min(text.size(), TITLE.size()));
        text.erase(std::remove_if(lines, text.end(), [](char unit) { return unit >= '0' && unit <= '9'; }), text.end());
        return text;
    }

    std::string reports;
};

template <class... Locks>
void acquire(Locks&... locks)
{
    std::jthread([&] {
        (locks.wait(), ...);
        (locks.signal(), ...);
    });
}

TEST(LockOrder, IsReportedOnceForEachPairThatIsAcquiredBothWays)
{
    Mutex a("a"), b("b"), c("c"), d("d");
    Semaphore s(1, "s");
    ReaderWriterLock w("w");
    Checked checked;
    acquire(a, b, c);
    acquire(d, s);
    EXPECT_EQ(checked.take(), "");
    acquire(b, a);
    EXPECT_EQ(checked.take(),
        TITLE
            + "  thread  holds mutex \"b\" and acquires mutex \"a\"\n"
              "  thread  held mutex \"a\" and acquired mutex \"b\"\n");
    acquire(b, a);
    acquire(a, b);
    EXPECT_EQ(checked.take(), "");

    acquire(s, w);
    w.waitShared();
    {
        const ScopedLock hold(d);
    }
    w.signalShared();
    EXPECT_EQ(checked.take(),
        TITLE
            + "  thread  holds reader-writer lock \"w\" and acquires mutex \"d\"\n"
              "  thread  held mutex \"d\" and acquired semaphore \"s\"\n"
              "  thread  held semaphore \"s\" and acquired reader-writer lock \"w\"\n");
}

TEST(LockOrder, IsNoMatterWhereNoThreadWaitsForTheOther)
{
    Checked checked;
    std::optional<Mutex> first(std::in_place, "first");
    Mutex second("second");
    acquire(*first, *first, second);

    second.wait();
    EXPECT_TRUE(first->tryWait());
    first->signal();
    EXPECT_TRUE(first->waitFor(1000));
    first->signal();
    EXPECT_EQ(checked.take(), "");
    first->wait(), first->signal(), second.signal();
    EXPECT_NE(checked.take(), "") << "the only one that counts";

    first.emplace("another lock at the same place");
    acquire(second, *first);
    EXPECT_EQ(checked.take(), "");

    Mutex outer("outer"), inner("inner");
    acquire(outer, inner);
    inner.wait(), inner.wait();
    {
        const MutexPause pause(inner);
        outer.wait();
    }
    inner.signal(), inner.signal(), outer.signal();
    outer.wait(), outer.signal();
    EXPECT_EQ(checked.take(), "") << "the pause released all, and acquired it in the right order";

    Semaphore isReady(0, "signal");
    isReady.signal();
    isReady.wait();
    acquire(second);
    second.wait(), second.signal();
    isReady.signal();
    acquire(second, isReady);
    EXPECT_EQ(checked.take(), "");
}

TEST(LockOrder, IsCheckedIfTheEnvironmentAsksForIt)
{
    if (std::getenv("VXLIB4_LOCK_ORDER") != nullptr) { // in the process that is started below
        Mutex a("a"), b;
        acquire(a, b);
        acquire(b, a);
        return;
    }
    for (const bool asks : {false, true}) {
        const char16_t* const environment[] = {asks ? u"VXLIB4_LOCK_ORDER=1" : u"VXLIB4_LOCK_ORDER=0", nullptr};
        exec::Process self(u"/proc/self/exe", u"--gtest_filter=LockOrder.IsCheckedIf*", nullptr, environment);
        std::string errors;
        const Reference<io::InputStream> stream = self.getErrorStream();
        for (signed char byte; stream->read(&byte, 1) == 1;)
            errors += static_cast<char>(byte);
        EXPECT_EQ(self.join(), 0) << errors;
        EXPECT_EQ(errors.starts_with(TITLE), asks) << errors;
    }
}

} // namespace
} // namespace vx::sync
