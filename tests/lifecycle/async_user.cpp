// A library that a host loads and unloads. It destroys processors, whose workers end later.
#include "vx/log/AsyncProcessor.h"
#include "vx/log/LogEntry.h"

#include <atomic>

namespace {

std::atomic<int> g_processed {0};

class Target final : public vx::Object, public vx::log::ILogProcessor {
public:
    VX_OBJECT_UNKNOWN(vx::Object)
    void process(const vx::log::ILogEntry*) override { ++g_processed; }
};

} // namespace

/// The number of entries processed: none may be lost.
extern "C" __attribute__((visibility("default"))) int drop_processors()
{
    constexpr int PROCESSORS = 4;
    constexpr int WORKERS = 8;
    for (int count = 0; count < PROCESSORS; ++count) {
        const vx::Reference<vx::log::AsyncProcessor> async = vx::log::AsyncProcessor::create(new Target, WORKERS);
        async->process(vx::log::LogEntry::create().get());
        async->waitUntilDone();
    }
    return g_processed;
}
