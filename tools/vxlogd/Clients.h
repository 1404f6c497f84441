#pragma once

#include "Receipt.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vxlogd {

/// Remembers how far the lines of each client are in the log, so that a client whose connection was lost can send again
/// what was not confirmed. A client is forgotten some time after its last connection.
class Clients {
public:
    /// Whether `id` has the form of an id: 32 hexadecimal digits.
    static bool isId(std::string_view id);
    static std::string newId();

    /// The progress of the client `id`, which begins with line 1 if it is not known. `connection` is its connection now.
    std::shared_ptr<Progress> find(std::string_view id, const std::shared_ptr<Waker>& waker, std::uint64_t connection);

    /// What a later server has to know, one client on each line, and back. False if the text is wrong.
    std::string save();
    bool restore(const std::string& text);

private:
    using Clock = std::chrono::steady_clock;
    struct Client {
        std::shared_ptr<Progress> progress;
        Clock::time_point lastSeen;
    };

    void forgetOld(Clock::time_point now);

    std::mutex m_lock;
    std::unordered_map<std::string, Client> m_clients;
    Clock::time_point m_lastLook = Clock::now();
};

} // namespace vxlogd
