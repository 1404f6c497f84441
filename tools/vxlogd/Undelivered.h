#pragma once

#include "Batch.h"
#include "Receipt.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace vxlogd {

/// The lines of the log whose clients wait until the brokers have them, in the order of the log. The writer of the
/// log adds them, and the thread that talks to the brokers tells what has arrived. It knows their numbers and not their
/// texts. While it is full, no client is read that waits for the brokers.
class Undelivered {
public:
    /// `onChange` is called when clients can be read again and when the trouble changes, on any thread.
    Undelivered(bool isActive, std::function<void()> onChange);

    /// Whether new lines of clients are to wait for the brokers. Those that wait already are done when this ends.
    void setActive(bool isActive);
    bool isActive() const { return m_isActive; }
    bool isFull() const { return m_isFull; }

    /// The lines will be in the log soon, or else they fail. If this throws, it has added nothing.
    void add(const Batch::Span& lines);
    /// All lines that were added, and have not failed, are in the log.
    void setWritten();
    /// A line that an earlier server wrote.
    void restore(const std::string& client, const std::shared_ptr<Progress>& progress, std::uint64_t line);

    /// A line has arrived, or will never be accepted. Lines that wait and precede it in the log are lost: their file
    /// was removed. Does nothing for a line that does not wait.
    void deliver(const std::string& client, std::uint64_t line);
    /// A mark after all lines that are in the log.
    std::uint64_t getWritten() const;
    /// Those before the mark are not in the log any more.
    void loseBefore(std::uint64_t mark);

    /// Why lines have to wait; empty if they do not.
    void setTrouble(const std::string& trouble);
    /// Null if there is none. Another object each time that it changes.
    std::shared_ptr<const std::string> getTrouble() const;
    std::size_t countLines() const;

private:
    struct Client {
        std::shared_ptr<Progress> progress;
        std::size_t lines = 0; ///< that the queue has
    };
    using Clients = std::unordered_map<std::string, Client>;
    struct Line {
        Clients::value_type* client;
        std::uint64_t number;
        std::size_t bytes;
    };

    void push(
        const std::string& client, const std::shared_ptr<Progress>& progress, std::uint64_t line, std::size_t bytes);
    void drop(Clients::value_type* client);
    void endFirst(bool hasArrived);
    void endWritten();
    bool updateRoom();

    const std::function<void()> m_onChange;
    mutable std::mutex m_lock;
    Clients m_clients;
    std::deque<Line> m_lines; ///< some may have failed and do not wait any more
    std::uint64_t m_popped = 0;
    std::uint64_t m_written = 0;
    std::shared_ptr<const std::string> m_trouble;
    std::atomic<bool> m_isActive;
    std::atomic<bool> m_isFull = false;
};

} // namespace vxlogd
