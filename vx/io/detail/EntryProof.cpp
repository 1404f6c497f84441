#include "vx/io/detail/EntryProof.h"

#include "vx/Result.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace vx::io::detail {

namespace {

constexpr std::int64_t PAGE = 4096;
constexpr std::int64_t MOST_BLOCKS = VXNamedSemNote::MOST_PROOF / sizeof(std::uint64_t);

/// From the fraction of the golden ratio; any odd number with well mixed bits is suitable.
constexpr std::uint64_t MULTIPLIER = 0x9E3779B97F4A7C15;

std::uint64_t mixed(std::uint64_t state, std::uint64_t word) noexcept
{
    return std::rotl(state ^ word, 29) * MULTIPLIER;
}

/// Processes four words at a time, independent of each other.
struct Lanes {
    static constexpr std::size_t STRIDE = 4 * sizeof(std::uint64_t);

    void add(const unsigned char* bytes) noexcept
    {
        std::uint64_t words[4];
        std::memcpy(words, bytes, STRIDE);
        a = mixed(a, words[0]);
        b = mixed(b, words[1]);
        c = mixed(c, words[2]);
        d = mixed(d, words[3]);
    }

    std::uint64_t a;
    std::uint64_t b = 1;
    std::uint64_t c = 2;
    std::uint64_t d = 3;
};

/// Protects against accidental equality, not against an attacker.
std::uint64_t checksum(const void* bytes, std::size_t length) noexcept
{
    const auto* position = static_cast<const unsigned char*>(bytes);
    const unsigned char* const end = position + length;
    Lanes lanes {length};
    for (; end - position >= static_cast<std::ptrdiff_t>(Lanes::STRIDE); position += Lanes::STRIDE)
        lanes.add(position);
    unsigned char rest[Lanes::STRIDE] = {};
    std::memcpy(rest, position, static_cast<std::size_t>(end - position));
    lanes.add(rest);
    std::uint64_t sum = 0;
    for (const std::uint64_t lane : {lanes.a, lanes.b, lanes.c, lanes.d})
        sum = mixed(sum, lane ^ (lane >> 32));
    return sum;
}

/// Divides bytes of a file into pieces that end at page boundaries, and groups these into blocks of a power of two of
/// pages.
class Pieces {
public:
    Pieces(std::int64_t start, std::int64_t length) noexcept
        : m_position(start)
        , m_end(start + length)
    {
        while (m_end / m_blockSize - start / m_blockSize >= MOST_BLOCKS)
            m_blockSize *= 2;
    }

    bool hasNext() const noexcept { return m_position < m_end; }
    std::int32_t length() const noexcept
    {
        return static_cast<std::int32_t>(std::min(PAGE - m_position % PAGE, m_end - m_position));
    }
    std::int64_t position() const noexcept { return m_position; }
    /// Adds a piece with this checksum. True if the piece ends a block, whose checksum is then stored in `block`.
    bool take(std::uint64_t sum, std::uint64_t& block) noexcept
    {
        m_position += length();
        m_sum = mixed(m_sum, sum);
        if (m_position % m_blockSize != 0 && hasNext())
            return false;
        block = m_sum;
        m_sum = 0;
        return true;
    }

private:
    std::int64_t m_position;
    std::int64_t m_end;
    std::int64_t m_blockSize = PAGE;
    std::uint64_t m_sum = 0;
};

/// Reads `length` bytes, at most a page, from `position` on.
bool readPiece(std::uint32_t file, std::int64_t position, std::int32_t length, char (&target)[PAGE]) noexcept
{
    for (std::int32_t got = 0; got < length;) {
        std::int32_t done = 0;
        if (failed(VXFileReadAt(file, position + got, target + got, length - got, &done)) || done == 0)
            return false;
        got += done;
    }
    return true;
}

} // namespace

void writeProof(VXNamedSemNote& note, const signed char* bytes) noexcept
{
    if (note.length <= VXNamedSemNote::MOST_PROOF) {
        note.proofLength = static_cast<std::uint32_t>(note.length);
        std::memcpy(note.proof, bytes, note.proofLength);
        return;
    }
    note.proofLength = 0;
    std::uint64_t block = 0;
    for (Pieces pieces(note.start, note.length); pieces.hasNext();) {
        if (pieces.take(
                checksum(bytes + (pieces.position() - note.start), static_cast<std::size_t>(pieces.length())), block)) {
            std::memcpy(note.proof + note.proofLength, &block, sizeof block);
            note.proofLength += sizeof block;
        }
    }
}

bool isProved(const VXNamedSemNote& note, std::uint32_t file, std::int64_t count) noexcept
{
    if (count > note.length)
        return false;
    char piece[PAGE];
    if (note.length <= VXNamedSemNote::MOST_PROOF) {
        return count <= note.proofLength && readPiece(file, note.start, static_cast<std::int32_t>(count), piece)
            && std::memcmp(piece, note.proof, static_cast<std::size_t>(count)) == 0;
    }
    bool isWholeBlock = true;
    std::uint32_t proved = 0;
    for (Pieces pieces(note.start, note.length); pieces.position() < note.start + count;) {
        const std::int32_t length = pieces.length();
        if (pieces.position() + length > note.start + count || !readPiece(file, pieces.position(), length, piece))
            return false;
        std::uint64_t block = 0;
        isWholeBlock = pieces.take(checksum(piece, static_cast<std::size_t>(length)), block);
        if (!isWholeBlock)
            continue;
        if (proved + sizeof block > note.proofLength || std::memcmp(note.proof + proved, &block, sizeof block) != 0)
            return false;
        proved += sizeof block;
    }
    return isWholeBlock;
}

} // namespace vx::io::detail
