#include "vx/sync/FakeMutex.h"

namespace vx::sync {

FakeMutex::FakeMutex(const char*, unsigned int) noexcept { }

FakeMutex::~FakeMutex() noexcept = default;

void FakeMutex::wait() { }

bool FakeMutex::tryWait()
{
    return true;
}

void FakeMutex::signal() { }

} // namespace vx::sync
