#pragma once

#include "common/Messages.h"

#include <functional>
#include <string>
#include <vector>

namespace vxreg {

/// Work in a separate process, so that what it calls may crash, end the process or never return.
class Trial {
public:
    /// Runs `work` in a child process. It reports problems by `tell`, and by `enter` what it does next. Returns all
    /// problems, the last one about the end of the child if that was not the end of the work. Throws vxtools::Failure if
    /// the system has no process for it.
    static std::vector<std::string> run(vxtools::Messages& messages, const std::function<void(Trial&)>& work);

    void tell(const vxtools::Text& problem);
    void enter(const vxtools::Text& stage);

private:
    Trial(int target, vxtools::Messages& messages);

    void send(char kind, const std::string& text) const;

    int m_target;
    vxtools::Messages& m_messages;
};

} // namespace vxreg
