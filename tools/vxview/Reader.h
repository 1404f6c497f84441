#pragma once

#include "Record.h"
#include "Source.h"
#include "Splitter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vxview {

/// The pieces of one log, one at a time. Needs memory for the largest one only.
class Reader {
public:
    /// If `needle` is not empty, pieces without this text may be left out: those whose bytes show without reading the
    /// fields that no value contains it. It must have no quotes, backslashes, control characters, "<", ">" or "&".
    Reader(const std::string& path, Access access, std::string needle);

    /// The next piece, valid until the next call. False at the end of the log, or if nothing is there yet.
    bool next();
    Record& getRecord() { return m_record; }
    /// After `next` has returned false: whether the log may still grow.
    bool mayGrow() const { return !m_isOver; }
    Source& getSource() { return m_source; }
    /// Continues with a piece that begins in the last `size` bytes. False if there are not so many: nothing changes then.
    bool skipToEnd(std::int64_t size);

private:
    bool fill();
    void makeRoom();
    void skipUnwanted();
    std::size_t findNeedle(std::string_view bytes) const;
    std::size_t nextNeedle();
    std::size_t nextEscape();
    std::size_t startOfPiece(std::size_t place) const;
    bool isLineOfJson(std::size_t end) const;
    std::string_view rest() const { return {m_buffer.get() + m_begin, m_end - m_begin}; }

    Source m_source;
    Splitter m_splitter;
    Record m_record;
    const std::string m_needle;
    const std::size_t m_rarest; ///< the place of one byte of the needle
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    // Before these places, there is none from `m_begin` on.
    std::size_t m_nextNeedle = 0;
    std::array<std::size_t, 2> m_nextEscapes {};
    bool m_isNeedleKnown = false; ///< there is one at that place
    std::size_t m_wanted = 0; ///< pieces that begin before this place are not skipped
    bool m_isFileOver = false;
    bool m_isOver = false;
};

} // namespace vxview
