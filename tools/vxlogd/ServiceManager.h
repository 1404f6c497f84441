#pragma once

#include <string>

namespace vxlogd {

/// Tells the service manager that started the program about its state, by the protocol of sd_notify: "READY=1" for
/// example. Does nothing without a manager, that is, if NOTIFY_SOCKET is not set. A failure is printed.
void tellManager(const std::string& state);
void tellManagerOfReload();

} // namespace vxlogd
