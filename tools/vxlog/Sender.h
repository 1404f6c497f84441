#pragma once

#include "Delivery.h"
#include "Link.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace vxlog {

/// Sends the lines of a backlog to a vxlogd, on its own thread. A lost connection is opened again, and what the
/// server has not acknowledged is sent again. The numbers of the lines let the server drop what it already has.
class Sender final : public Delivery {
public:
    struct Policy {
        int level = 0;
        bool hasLevels = false; ///< each line begins with its level: "<3>text"
        bool keeps = false; ///< as for Delivery
    };

    Sender(const Destination& destination, const Policy& policy, Backlog& backlog, Teller& teller);
    ~Sender() override;

    // Delivery
    void connect() override;

private:
    // Delivery
    void run() override;
    void disconnect() noexcept override;

    bool openLink(const Link::Wait& wait);
    bool serve();
    void greet();
    bool beats() const;
    bool sendAll();
    bool hearAll();
    void hear(std::string_view answer);
    void acknowledge(std::uint64_t last);
    void advance();
    void lose();
    void tellLoss();
    void pause();
    /// Waits for the events, a wake, a signal or a time. True if the descriptor is ready.
    bool waitFor(int descriptor, short events, Clock::time_point until);
    void checkPatience();

    const Policy m_policy;
    const std::optional<vxtools::TlsContext> m_tls; ///< for encryption

    // Of the connection.
    std::unique_ptr<Link> m_link;
    std::uint64_t m_begin = 1; ///< its first line
    std::string m_output;
    std::string_view m_rest; ///< of the output
    std::string m_heard;
    bool m_isHeard = false; ///< the server has acknowledged something
    bool m_isRefused = false; ///< the server does not understand the greeting
    bool m_hasEndedOutput = false;
    Clock::time_point m_lastSent;

    // Of the server.
    bool m_isOldServer = false; ///< it knows neither clients nor signs of life
    std::uint64_t m_acknowledged = 0;
    std::string m_reason; ///< why it is away
    bool m_isLossTold = false;
    bool m_mayHaveLost = false; ///< lines that no answer confirms
    std::chrono::milliseconds m_pause {};
    std::minstd_rand m_random {std::random_device()()};
};

} // namespace vxlog
