#include "ForwardSource.h"

#include "Complaint.h"
#include "common/Failure.h"
#include "common/Input.h"
#include "common/Output.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxlogd {

using vxtools::Failure;

namespace {

constexpr std::string_view HEAD = "vxlogd-forward-1";

/// FNV-1a with 64 bits.
std::uint64_t hashOf(std::string_view bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return hash;
}

std::size_t slashOf(const std::string& path)
{
    return path.rfind('/') + 1; // 0 without a folder
}

/// The numbers of the files that a rotation has closed, the oldest first.
std::vector<std::uint64_t> olderNumbers(const std::string& path)
{
    constexpr std::size_t FEWEST_DIGITS = 6;
    const std::string folder = slashOf(path) == 0 ? "." : path.substr(0, slashOf(path));
    const std::string start = path.substr(slashOf(path)) + ".";
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), &::closedir);
    std::vector<std::uint64_t> numbers;
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        std::string_view name(entry->d_name);
        if (!name.starts_with(start) || name.size() < start.size() + FEWEST_DIGITS)
            continue;
        name.remove_prefix(start.size());
        std::uint64_t number = 0;
        const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), number);
        if (error == std::errc() && stop == name.data() + name.size())
            numbers.push_back(number);
    }
    std::ranges::sort(numbers);
    return numbers;
}

std::string olderPath(const std::string& path, std::uint64_t number)
{
    char digits[24];
    std::snprintf(digits, sizeof digits, ".%06llu", static_cast<unsigned long long>(number));
    return path + digits;
}

bool isSame(const LogPart& part, const struct stat& status)
{
    return part.device == status.st_dev && part.inode == status.st_ino;
}

} // namespace

std::optional<ForwardPosition> ForwardPosition::load(const std::string& path)
{
    if (::access(path.c_str(), F_OK) != 0 && errno == ENOENT)
        return std::nullopt;
    std::string text;
    std::ifstream file(path);
    std::getline(file, text);
    const std::size_t end = std::min(text.rfind(' '), text.size());
    ForwardPosition position;
    std::istringstream words(text);
    std::string head;
    std::uint64_t check = 0;
    if (!(words >> head >> position.id >> position.lines >> position.device >> position.inode >> position.number
            >> position.offset >> position.start >> check)
        || head != HEAD || check != hashOf(std::string_view(text).substr(0, end)))
        throw Failure(path, "is no position of a forwarded log");
    position.clients.assign(std::istreambuf_iterator<char>(file), {});
    return position;
}

void ForwardPosition::save(const std::string& path) const
{
    std::ostringstream words;
    words.imbue(std::locale::classic());
    words << HEAD << ' ' << id << ' ' << lines << ' ' << device << ' ' << inode << ' ' << number << ' ' << offset << ' '
          << start;
    const std::string text = words.str() + " " + std::to_string(hashOf(words.str())) + "\n" + clients;
    const std::string beside = path + ".new";
    const int file = vxtools::openFile(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    bool isDone = file >= 0 && vxtools::writeAll(file, text) && ::fdatasync(file) == 0;
    int error = errno;
    if (file >= 0)
        ::close(file);
    if (isDone && ::rename(beside.c_str(), path.c_str()) != 0) {
        error = errno;
        isDone = false;
    }
    if (!isDone)
        throw Failure(path, vxtools::textOfError(error));
}

LogPart::LogPart(int descriptor, dev_t dev, ino_t ino, std::uint64_t rotated)
    : file(descriptor)
    , device(dev)
    , inode(ino)
    , number(rotated)
{
}

LogPart::~LogPart()
{
    ::close(file);
}

std::string LogPart::readStart(std::int64_t offset) const
{
    std::string bytes(static_cast<std::size_t>(std::clamp<std::int64_t>(offset, 0, START)), '\0');
    const ssize_t count = ::pread(file, bytes.data(), bytes.size(), 0);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
}

std::uint64_t LogPart::hashStart(std::int64_t offset) const
{
    return hashOf(readStart(offset));
}

std::int64_t LogPart::size() const
{
    struct stat status { };
    return ::fstat(file, &status) == 0 ? status.st_size : 0;
}

ForwardSource::ForwardSource(std::string path, const std::optional<ForwardPosition>& position, bool complains)
    : m_path(std::move(path))
    , m_complains(complains)
{
    if (position && position->number > 0 && !find(*position)) {
        ++m_lostFiles;
        // The files after the missing one follow. A part with its number stands for it.
        begin(std::make_shared<const LogPart>(-1, 0, 0, position->number), 0);
    } else if (m_part == nullptr) {
        begin(openCurrent(), 0);
    }
}

/// Null if it is not there.
std::shared_ptr<const LogPart> ForwardSource::open(const std::string& path, std::uint64_t number) const
{
    const int file = vxtools::openFile(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 && errno == ENOENT)
        return nullptr;
    struct stat status { };
    if (file < 0 || ::fstat(file, &status) != 0) {
        const int error = errno;
        if (file >= 0)
            ::close(file);
        throw Failure(path, vxtools::textOfError(error));
    }
    return std::make_shared<const LogPart>(file, status.st_dev, status.st_ino, number);
}

/// With the number that it gets when it is rotated: a rotation meanwhile would make it wrong.
std::shared_ptr<const LogPart> ForwardSource::openCurrent() const
{
    constexpr int ATTEMPTS = 10;
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
        const std::vector<std::uint64_t> before = olderNumbers(m_path);
        std::shared_ptr<const LogPart> part = open(m_path, before.empty() ? 1 : before.back() + 1);
        const std::vector<std::uint64_t> after = olderNumbers(m_path);
        if (part == nullptr || before.empty() == after.empty()) {
            if (part == nullptr || before.empty() || before.back() == after.back())
                return part;
        }
    }
    return nullptr; // later
}

/// The file of the position, under its name now.
bool ForwardSource::find(const ForwardPosition& position)
{
    const auto take = [&](const std::shared_ptr<const LogPart>& part) {
        if (part == nullptr || part->device != position.device || part->inode != position.inode
            || part->hashStart(position.offset) != position.start)
            return false;
        // Bytes that a failed write left for a moment, and that were forwarded, are not there any more.
        begin(part, std::min(position.offset, part->size()));
        return true;
    };
    if (take(openCurrent()))
        return true;
    return std::ranges::any_of(
        olderNumbers(m_path), [&](std::uint64_t number) { return take(open(olderPath(m_path, number), number)); });
}

void ForwardSource::begin(std::shared_ptr<const LogPart> part, std::int64_t offset)
{
    m_part = std::move(part);
    m_bytes.clear();
    m_begin = m_searched = 0;
    m_offset = offset;
    m_start = m_part != nullptr ? m_part->readStart(offset) : std::string();
}

/// Whether there is a file after this one. It has to have bytes: a program that moves the log away may create a new one
/// before the server writes to it.
bool ForwardSource::findNext()
{
    struct stat current { };
    const bool hasCurrent = ::stat(m_path.c_str(), &current) == 0;
    if (hasCurrent && isSame(*m_part, current))
        return false;
    const std::vector<std::uint64_t> older = olderNumbers(m_path);
    if (const auto next = std::ranges::upper_bound(older, m_part->number); next != older.end()) {
        m_next = open(olderPath(m_path, *next), *next);
        if (m_next != nullptr && *next > m_part->number + 1) {
            m_lostFiles += *next - m_part->number - 1;
            if (m_complains)
                complain("forwarding: older files of the log were removed before they were forwarded");
        }
    } else if (hasCurrent && current.st_size > 0) {
        m_next = openCurrent();
        if (m_next != nullptr && !isSame(*m_next, current))
            m_next = nullptr; // it was rotated just now
    }
    return m_next != nullptr;
}

std::size_t ForwardSource::readMore()
{
    constexpr std::size_t BLOCK_SIZE = 256 * 1024;
    if (m_part->file < 0)
        return 0;
    m_bytes.erase(0, m_begin);
    m_offset += static_cast<std::int64_t>(m_begin);
    m_searched -= m_begin;
    m_begin = 0;
    if (m_start.size() < static_cast<std::size_t>(std::min(m_offset, LogPart::START)))
        m_start = m_part->readStart(m_offset);
    const std::size_t length = m_bytes.size();
    m_bytes.resize(length + BLOCK_SIZE);
    ssize_t count = 0;
    do
        count
            = ::pread(m_part->file, m_bytes.data() + length, BLOCK_SIZE, m_offset + static_cast<std::int64_t>(length));
    while (count < 0 && errno == EINTR);
    const int error = errno;
    m_bytes.resize(length + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count < 0)
        throw Failure(m_path, vxtools::textOfError(error));
    return static_cast<std::size_t>(count);
}

/// Whether the file begins anew. A file that only lost its end is another matter: a write has failed, and the server
/// will write the same bytes again.
bool ForwardSource::isCut()
{
    if (m_part->file < 0 || m_part->size() >= m_offset + static_cast<std::int64_t>(m_begin))
        return false;
    const std::string start = m_part->readStart(static_cast<std::int64_t>(m_start.size()));
    return start.empty() || !m_start.starts_with(start);
}

std::optional<ForwardSource::Line> ForwardSource::next()
{
    if (m_part == nullptr)
        begin(openCurrent(), 0);
    while (m_part != nullptr) {
        const std::size_t end = m_bytes.find('\n', m_searched);
        if (end != m_bytes.npos) {
            const std::string_view text = std::string_view(m_bytes).substr(m_begin, end - m_begin);
            m_begin = m_searched = end + 1;
            return Line {text, m_part, m_offset + static_cast<std::int64_t>(m_begin)};
        }
        m_searched = m_bytes.size();
        if (readMore() > 0)
            continue;
        if (m_next == nullptr) {
            // What is not complete is read again: if its writer was killed, the next one removes it.
            m_bytes.resize(m_begin);
            m_searched = m_begin;
            if (isCut()) {
                if (m_complains)
                    complain("forwarding: the log was cut, and is read from its start");
                begin(m_part, 0);
                continue;
            }
        }
        if (m_next != nullptr) { // the last look at the old file was after the new one had been found
            if (m_begin < m_bytes.size()) { // the start of an entry that was never completed
                const std::string_view text = std::string_view(m_bytes).substr(m_begin);
                m_begin = m_searched = m_bytes.size();
                return Line {text, m_part, m_offset + static_cast<std::int64_t>(m_begin)};
            }
            begin(std::exchange(m_next, nullptr), 0);
        } else if (!findNext()) {
            break;
        }
    }
    return std::nullopt;
}

std::int64_t ForwardSource::countBytesAfter(const LogPart* part, std::int64_t offset) const
{
    struct stat status { };
    std::int64_t bytes = 0;
    const bool hasCurrent = ::stat(m_path.c_str(), &status) == 0;
    if (hasCurrent && (part == nullptr || !isSame(*part, status)))
        bytes += status.st_size;
    if (part == nullptr)
        return bytes;
    if (part->file >= 0)
        bytes += std::max<std::int64_t>(part->size() - offset, 0);
    if (hasCurrent && isSame(*part, status))
        return bytes;
    for (const std::uint64_t number : olderNumbers(m_path)) {
        if (number > part->number && ::stat(olderPath(m_path, number).c_str(), &status) == 0)
            bytes += status.st_size;
    }
    return bytes;
}

} // namespace vxlogd
