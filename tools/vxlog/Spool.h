#pragma once

#include "Backlog.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>

namespace vxlog {

/// A descriptor that is closed with its owner.
class OpenFile {
public:
    OpenFile() = default;
    /// Throws Failure with the name.
    OpenFile(const std::string& path, int flags);
    ~OpenFile();
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) noexcept;

    int get() const noexcept { return m_descriptor; }

private:
    int m_descriptor = -1;
};

/// Lines in a folder, which the next run sends if this one cannot. A kill at any moment loses no line that `flush` has
/// written. One process at a time.
///
/// A file holds lines from the number that is its name on, each with its checksum. The last file always exists, even if
/// it is empty, so that a number is never given twice. The file "state" says which lines are acknowledged.
class Spool final : public Backlog {
public:
    /// Uses up to `most` bytes of the disk. Throws Failure if the folder cannot be used, or if another process uses it.
    Spool(const std::string& folder, std::int64_t most);
    ~Spool() override;

    // Backlog
    const std::string& id() const override { return m_id; }
    bool append(std::string_view line) override;
    bool flush() override;
    Range range() const override;
    std::size_t read(std::uint64_t from, std::string& target, std::size_t most) override;
    void acknowledge(std::uint64_t last) override;

    /// The number of lines that `flush` could not write, and why.
    std::uint64_t unwritten() const { return m_pendingLines; }
    const std::string& reason() const { return m_reason; }
    /// Lines whose checksum was wrong. A line that says so was sent instead of each.
    std::uint64_t damaged() const { return m_damaged; }

private:
    struct Segment {
        std::uint64_t first;
        std::uint64_t lines;
        std::int64_t size;
    };
    struct State;

    std::string pathOf(const Segment& segment) const;
    void recover();
    void measure(Segment& segment);
    bool readState(std::uint64_t& acknowledged);
    std::string stateText() const;
    void replaceState();
    void writeState();
    void begin(std::uint64_t first);
    void dropDone();
    std::int64_t size() const;
    void syncFolder() const;

    const std::string m_folder;
    const std::int64_t m_most;
    const std::int64_t m_mostOfSegment;
    OpenFile m_lockFile;
    OpenFile m_state;
    std::string m_id;

    mutable std::mutex m_lock;
    std::deque<Segment> m_segments;
    OpenFile m_last; ///< the file of the last segment
    std::uint64_t m_acknowledged = 0;
    std::string m_pending; ///< not yet in a file
    std::uint64_t m_pendingLines = 0;
    std::string m_reason;
    std::uint64_t m_damaged = 0;

    // The place where the next read probably begins.
    OpenFile m_reader;
    std::uint64_t m_readerFirst = 0; ///< the segment of the reader; 0 for none
    std::uint64_t m_readerLine = 0;
    std::int64_t m_readerOffset = 0;
};

} // namespace vxlog
