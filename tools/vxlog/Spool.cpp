#include "Spool.h"

#include "Texts.h"
#include "common/Failure.h"
#include "common/Input.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxlog {

using vxtools::Failure;

namespace {

constexpr std::string_view EXTENSION = ".lines";
constexpr std::size_t NUMBER_DIGITS = 20;
constexpr std::size_t CHECKSUM_DIGITS = 8;
constexpr std::string_view STATE_HEAD = "vxlog-spool 1";
constexpr std::string_view DAMAGED = "[a damaged line of the spool was left out]";

/// The CRC-32 of ISO 3309, in hexadecimal digits.
std::string checksumOf(std::string_view bytes)
{
    static constexpr auto TABLE = [] {
        std::array<std::uint32_t, 256> table {};
        for (std::uint32_t index = 0; index < table.size(); ++index) {
            std::uint32_t rest = index;
            for (int bit = 0; bit < 8; ++bit)
                rest = (rest >> 1) ^ ((rest & 1) != 0 ? 0xEDB88320U : 0);
            table[index] = rest;
        }
        return table;
    }();
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char byte : bytes)
        sum = TABLE[(sum ^ static_cast<unsigned char>(byte)) & 0xFF] ^ (sum >> 8);
    char digits[CHECKSUM_DIGITS + 1];
    std::snprintf(digits, sizeof digits, "%08x", ~sum);
    return digits;
}

/// Of "checksum line"; none of a damaged one.
std::optional<std::string_view> lineIn(std::string_view record)
{
    if (record.size() <= CHECKSUM_DIGITS || record[CHECKSUM_DIGITS] != ' ')
        return std::nullopt;
    const std::string_view line = record.substr(CHECKSUM_DIGITS + 1);
    return record.substr(0, CHECKSUM_DIGITS) == checksumOf(line) ? std::optional(line) : std::nullopt;
}

std::string padded(std::uint64_t number)
{
    const std::string digits = std::to_string(number);
    return std::string(NUMBER_DIGITS - digits.size(), '0') + digits;
}

/// Distinguishes the runs of the machine: what was not on the disk is lost when it stops.
std::string bootId()
{
    std::string id;
    std::ifstream("/proc/sys/kernel/random/boot_id") >> id;
    return id.empty() ? "unknown" : id;
}

std::size_t readAt(int file, char* target, std::size_t length, std::int64_t offset)
{
    ssize_t got;
    do
        got = ::pread(file, target, length, offset);
    while (got < 0 && errno == EINTR);
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool writeAt(int file, std::string_view bytes, std::int64_t offset)
{
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(file, bytes.data(), bytes.size(), offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        offset += count;
    }
    return true;
}

} // namespace

OpenFile::OpenFile(const std::string& path, int flags)
    : m_descriptor(vxtools::openFile(path.c_str(), flags | O_CLOEXEC, 0600))
{
    if (m_descriptor < 0)
        throw Failure(path, vxtools::textOfError(errno));
}

OpenFile::~OpenFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

Spool::Spool(const std::string& folder, std::int64_t most)
    : m_folder(folder)
    , m_most(most)
    , m_mostOfSegment(std::clamp<std::int64_t>(most / 8, 4096, 8 * 1024 * 1024))
{
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        throw Failure(folder, vxtools::textOfError(errno));
    m_lockFile = OpenFile(folder + "/lock", O_RDWR | O_CREAT);
    if (::flock(m_lockFile.get(), LOCK_EX | LOCK_NB) != 0) // the system frees it when this process ends
        throw Failure(folder, errno == EWOULDBLOCK ? vxtools::Text(SPOOL_IN_USE()) : vxtools::textOfError(errno));
    recover();
}

Spool::~Spool()
{
    ::fdatasync(m_last.get());
    ::fdatasync(m_state.get());
}

bool Spool::append(std::string_view line)
{
    constexpr std::size_t MOST_PENDING = 1024 * 1024;
    const std::lock_guard lock(m_lock);
    const auto length = static_cast<std::int64_t>(CHECKSUM_DIGITS + line.size() + 2);
    if (m_pending.size() >= MOST_PENDING || size() + static_cast<std::int64_t>(m_pending.size()) + length > m_most)
        return false;
    m_pending += checksumOf(line);
    m_pending += ' ';
    m_pending += line;
    m_pending += '\n';
    ++m_pendingLines;
    return true;
}

bool Spool::flush()
{
    const std::lock_guard lock(m_lock);
    if (m_pending.empty())
        return true;
    Segment& last = m_segments.back();
    if (!writeAt(m_last.get(), m_pending, last.size)) {
        m_reason = vxtools::textOfError(errno);
        static_cast<void>(!::ftruncate(m_last.get(), last.size));
        return false;
    }
    last.size += static_cast<std::int64_t>(m_pending.size());
    last.lines += std::exchange(m_pendingLines, 0);
    m_pending.clear();
    if (last.size >= m_mostOfSegment) {
        try {
            begin(last.first + last.lines);
        } catch (const Failure&) { // the file may grow until there is room for another one
        }
    }
    return true;
}

Backlog::Range Spool::range() const
{
    const std::lock_guard lock(m_lock);
    return {m_acknowledged + 1, m_segments.back().first + m_segments.back().lines};
}

std::size_t Spool::read(std::uint64_t from, std::string& target, std::size_t most)
{
    constexpr std::size_t BLOCK_SIZE = 64 * 1024;
    const std::lock_guard lock(m_lock);
    const auto segment
        = std::ranges::find_if(m_segments, [&](const Segment& each) { return from < each.first + each.lines; });
    if (segment == m_segments.end())
        return 0;
    if (from < segment->first) { // a file before it has lost its end
        ++m_damaged;
        target.append(DAMAGED) += '\n';
        return 1;
    }
    if (m_readerFirst != segment->first || from < m_readerLine) {
        m_readerFirst = 0;
        m_reader = OpenFile(pathOf(*segment), O_RDONLY);
        m_readerFirst = m_readerLine = segment->first;
        m_readerOffset = 0;
    }
    std::size_t count = 0;
    const std::size_t start = target.size();
    std::string block;
    std::size_t begin = 0; // of a record in the block
    while (m_readerLine < segment->first + segment->lines && target.size() - start < most) {
        const std::size_t end = block.find('\n', begin);
        if (end == block.npos) {
            block.erase(0, begin);
            begin = 0;
            const std::size_t length = block.size();
            block.resize(length + BLOCK_SIZE);
            const auto offset = m_readerOffset + static_cast<std::int64_t>(length);
            const std::size_t got = readAt(m_reader.get(), block.data() + length, BLOCK_SIZE, offset);
            if (got == 0)
                throw Failure(pathOf(*segment), SPOOL_CUT());
            block.resize(length + got);
            continue;
        }
        if (m_readerLine >= from) {
            const std::optional<std::string_view> line = lineIn(std::string_view(block).substr(begin, end - begin));
            m_damaged += line ? 0 : 1;
            target += line.value_or(DAMAGED);
            target += '\n';
            ++count;
        }
        ++m_readerLine;
        m_readerOffset += static_cast<std::int64_t>(end + 1 - begin);
        begin = end + 1;
    }
    return count;
}

void Spool::acknowledge(std::uint64_t last)
{
    const std::lock_guard lock(m_lock);
    m_acknowledged = std::max(m_acknowledged, last);
    writeState();
    dropDone();
}

std::string Spool::pathOf(const Segment& segment) const
{
    return m_folder + "/" + padded(segment.first).append(EXTENSION);
}

void Spool::recover()
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder, error)) {
        const std::string name = entry.path().filename().string();
        Segment segment {0, 0, 0};
        const auto [stop, fault] = std::from_chars(name.data(), name.data() + name.size(), segment.first);
        if (fault == std::errc() && segment.first > 0 && name == padded(segment.first).append(EXTENSION))
            m_segments.push_back(segment);
    }
    if (error)
        throw Failure(m_folder, error.message());
    std::ranges::sort(m_segments, {}, &Segment::first);
    for (Segment& segment : m_segments)
        measure(segment);
    const bool isKnown = readState(m_acknowledged) && !m_segments.empty();
    if (!isKnown) { // the server must not take new lines for old ones
        m_id = newId();
        m_acknowledged = m_segments.empty() ? 0 : std::max(m_acknowledged, m_segments.front().first - 1);
    }
    const std::uint64_t end = m_segments.empty() ? 1 : m_segments.back().first + m_segments.back().lines;
    m_acknowledged = std::max(m_acknowledged, m_segments.empty() ? 0 : m_segments.front().first - 1);
    const bool hasEmptyFile = !m_segments.empty() && m_segments.back().size == 0 && m_acknowledged + 1 == end;
    if (m_acknowledged + 1 < end || hasEmptyFile)
        m_last = OpenFile(pathOf(m_segments.back()), O_RDWR);
    else
        begin(m_acknowledged + 1);
    replaceState();
    dropDone();
}

/// Counts the lines of a file, and cuts off the beginning of a line whose writer was killed.
void Spool::measure(Segment& segment)
{
    const OpenFile file(pathOf(segment), O_RDWR);
    std::int64_t size = 0;
    char block[64 * 1024];
    while (const std::size_t got = readAt(file.get(), block, sizeof block, size)) {
        const std::string_view bytes(block, got);
        segment.lines += static_cast<std::uint64_t>(std::ranges::count(bytes, '\n'));
        if (const std::size_t last = bytes.rfind('\n'); last != bytes.npos)
            segment.size = size + static_cast<std::int64_t>(last) + 1;
        size += static_cast<std::int64_t>(got);
    }
    if (size != segment.size && ::ftruncate(file.get(), segment.size) != 0)
        throw Failure(pathOf(segment), vxtools::textOfError(errno));
}

/// False if the numbers of the lines mean nothing to the server.
bool Spool::readState(std::uint64_t& acknowledged)
{
    std::string text;
    std::getline(std::ifstream(m_folder + "/state"), text);
    const std::size_t end = text.rfind(' ');
    if (end == text.npos || text.substr(end + 1) != checksumOf(std::string_view(text).substr(0, end)))
        return false;
    std::istringstream words(text.substr(std::min(end, STATE_HEAD.size())));
    std::string boot;
    return text.starts_with(STATE_HEAD) && words >> m_id >> acknowledged >> boot && boot == bootId();
}

std::string Spool::stateText() const
{
    static const std::string boot = bootId();
    std::string text = std::string(STATE_HEAD) + " " + m_id + " " + padded(m_acknowledged) + " " + boot;
    return text + " " + checksumOf(text) + "\n";
}

void Spool::replaceState()
{
    const std::string path = m_folder + "/state";
    OpenFile file(path + ".new", O_RDWR | O_CREAT | O_TRUNC);
    if (!writeAt(file.get(), stateText(), 0) || ::fsync(file.get()) != 0
        || ::rename((path + ".new").c_str(), path.c_str()) != 0)
        throw Failure(path, vxtools::textOfError(errno));
    m_state = std::move(file);
    syncFolder();
}

/// The text has always the same length. If it cannot be written, lines may be sent again.
void Spool::writeState()
{
    writeAt(m_state.get(), stateText(), 0);
}

void Spool::begin(std::uint64_t first)
{
    const Segment segment {first, 0, 0};
    OpenFile file(pathOf(segment), O_RDWR | O_CREAT | O_EXCL);
    try {
        if (!m_segments.empty())
            ::fdatasync(m_last.get());
        syncFolder();
        m_segments.push_back(segment);
    } catch (...) {
        ::unlink(pathOf(segment).c_str()); // the file before it goes on, and its lines will have these numbers
        throw;
    }
    m_last = std::move(file);
}

void Spool::dropDone()
{
    while (m_segments.size() > 1 && m_segments[1].first <= m_acknowledged + 1) {
        if (m_readerFirst == m_segments.front().first)
            m_readerFirst = 0;
        ::unlink(pathOf(m_segments.front()).c_str());
        m_segments.pop_front();
    }
}

std::int64_t Spool::size() const
{
    std::int64_t all = 0;
    for (const Segment& segment : m_segments)
        all += segment.size;
    return all;
}

void Spool::syncFolder() const
{
    const OpenFile folder(m_folder, O_RDONLY | O_DIRECTORY);
    ::fsync(folder.get());
}

} // namespace vxlog
