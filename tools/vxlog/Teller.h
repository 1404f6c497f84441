#pragma once

#include "common/Messages.h"
#include "common/Program.h"

#include <mutex>

namespace vxlog {

/// Tells the user what happens while the program runs on. For several threads.
class Teller {
public:
    explicit Teller(vxtools::Messages& messages)
        : m_messages(messages)
    {
    }

    void tell(const vxtools::Text& text)
    {
        const std::lock_guard lock(m_lock);
        vxtools::complain("vxlog", m_messages.say(text));
    }

private:
    std::mutex m_lock;
    vxtools::Messages& m_messages;
};

} // namespace vxlog
