#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>

namespace vxlog {

/// The lines on their way to a server, numbered from 1. A line stays until the server has acknowledged it. One thread
/// appends, and another one reads and acknowledges.
class Backlog {
public:
    virtual ~Backlog() = default;

    /// The name by which the server knows the numbers: 32 hexadecimal digits.
    virtual const std::string& id() const = 0;
    /// False if there is no room.
    virtual bool append(std::string_view line) = 0;
    /// Makes visible to `read` what was appended. False if some of it could not be kept.
    virtual bool flush() = 0;

    /// The number of the first line that is not acknowledged, and the number of the next line.
    struct Range {
        std::uint64_t first;
        std::uint64_t end;
    };
    virtual Range range() const = 0;
    /// Appends lines with their line feeds to `target`, the first one with the number `from`, up to some `most` bytes.
    /// Returns how many.
    virtual std::size_t read(std::uint64_t from, std::string& target, std::size_t most) = 0;
    /// Drops all lines up to this one.
    virtual void acknowledge(std::uint64_t last) = 0;

protected:
    static std::string newId();
};

/// Lines in memory, some megabytes at most.
class MemoryBacklog final : public Backlog {
public:
    // Backlog
    const std::string& id() const override { return m_id; }
    bool append(std::string_view line) override;
    bool flush() override { return true; }
    Range range() const override;
    std::size_t read(std::uint64_t from, std::string& target, std::size_t most) override;
    void acknowledge(std::uint64_t last) override;

private:
    /// The end of a line in `m_bytes`.
    std::size_t endOf(std::uint64_t line) const;

    const std::string m_id = newId();
    mutable std::mutex m_lock;
    std::uint64_t m_first = 1;
    std::string m_bytes;
    std::uint64_t m_dropped = 0; ///< bytes before `m_bytes`
    std::size_t m_start = 0; ///< of the first line, in `m_bytes`
    std::deque<std::uint64_t> m_ends; ///< of the lines, in bytes since the first one
};

} // namespace vxlog
