#pragma once

#include "Form.h"
#include "Receipt.h"

#include <vx/log/LogEntry.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vxlogd {

/// Lines of one client that follow one another, on their way to the log. They have one time. A queue of entries takes
/// it as one entry.
class Batch final : public vx::log::LogEntry {
public:
    /// `peer` is in UTF-8. The form may be null. `client` is for the log; empty if it does not tell who sent a line.
    /// `awaits` is whether the lines are done when the brokers have them, and not when they are in the log.
    Batch(std::shared_ptr<Progress> progress, std::string peer, std::shared_ptr<const Form> form,
        std::string client = {}, bool awaits = false);

    /// Adds a line of `bytes` bytes; `text` is readable, in UTF-8. The first one has the number `line` at the progress,
    /// and the others follow it. Nothing is added if this throws std::bad_alloc.
    void add(std::uint64_t line, std::size_t bytes, int level, std::string_view text);
    void setFirstSequence(std::int64_t sequence) { m_firstSequence = sequence; }

    std::size_t getSize() const { return m_lines.size(); }
    std::uint64_t getNextLine() const { return m_firstLine + m_lines.size(); }
    bool awaits() const { return m_awaits; }
    const std::string& getClient() const { return m_client; }
    const std::shared_ptr<Progress>& getProgress() const { return m_progress; }
    /// Appends the entry of a line as the form prints it. False, with nothing appended, if only the writer can.
    bool print(std::size_t index, const Form* form, Block& block) const;
    /// Views of this batch.
    Fields getFields(std::size_t index) const;
    vx::Reference<vx::log::LogEntry> createEntry(std::size_t index) const;

    /// Some of the lines.
    struct Span {
        vx::Reference<const Batch> batch;
        std::size_t first;
        std::size_t count;

        std::uint64_t firstLine() const { return batch->m_firstLine + first; }
        std::size_t bytes() const { return bytes(0, count); }
        /// Of `size` lines from the one at `index` on.
        std::size_t bytes(std::size_t index, std::size_t size) const
        {
            return batch->m_lines[first + index + size - 1].bytesEnd - batch->bytesBefore(first + index);
        }
        void finish() const { batch->m_progress->finish(firstLine(), count, bytes()); }
        void fail() const { batch->m_progress->fail(firstLine(), count, bytes()); }
    };
    Span all() const { return {vx::Reference<const Batch>(this), 0, m_lines.size()}; }

private:
    struct Line {
        std::size_t bytesEnd; ///< the sums of this and all earlier lines
        std::size_t textEnd;
        std::size_t restEnd;
        int level;
        bool isPrinted;
    };

    std::size_t bytesBefore(std::size_t index) const { return index > 0 ? m_lines[index - 1].bytesEnd : 0; }

    const std::shared_ptr<Progress> m_progress;
    const std::string m_peer;
    const std::shared_ptr<const Form> m_form;
    const std::string m_client;
    const bool m_awaits;
    const vx::Reference<const vx::log::ZonedTimeStamp> m_time {new vx::log::ZonedTimeStamp};
    const std::string m_timeText = m_time->toString().toUtf8();
    std::uint64_t m_firstLine = 0;
    std::int64_t m_firstSequence = 0;
    std::vector<Line> m_lines;
    std::string m_texts;
    std::string m_rests; ///< of entries, after the sequence number
};

} // namespace vxlogd
