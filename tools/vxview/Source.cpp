#include "Source.h"

#include "Spawn.h"
#include "common/Failure.h"
#include "common/Input.h"
#include "common/Kafka.h"
#include "common/LocalSocket.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vxview {

using namespace vxtools;

namespace {

constexpr Message IS_FOLDER {u"vxview.is-folder", "is a folder"};
constexpr Message DECOMPRESSION {u"vxview.decompression", "{0} cannot decompress it"};
constexpr Message NO_TAIL {u"vxview.no-tail", "is no server of a log that can be watched: \"{0}\""};
constexpr Message NO_PROGRAM {u"vxview.no-program", "needs the program {0}: {1}"};

/// A form of compression: what its files begin with, and the program that reads them.
struct Compression {
    std::string_view start;
    const char* program;
};
constexpr Compression COMPRESSIONS[] = {
    {"\x1F\x8B", "gzip"},
    {"\xFD"
     "7zXZ",
        "xz"},
    {"\x28\xB5\x2F\xFD", "zstd"},
    {"BZh", "bzip2"},
};

const char* programFor(int file)
{
    char start[6];
    const ssize_t count = pread(file, start, sizeof start, 0);
    for (const Compression& each : COMPRESSIONS) {
        if (count > 0 && std::string_view(start, static_cast<std::size_t>(count)).starts_with(each.start))
            return each.program;
    }
    return nullptr;
}

/// The number in "LOG.000012" and "LOG.000012.gz"; nothing for other names.
std::optional<std::uint64_t> numberIn(std::string_view name, std::string_view log)
{
    constexpr std::size_t FEWEST_DIGITS = 6;
    if (!name.starts_with(log) || name.size() < log.size() + 1 + FEWEST_DIGITS || name[log.size()] != '.')
        return std::nullopt;
    name.remove_prefix(log.size() + 1);
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const std::string_view rest = name.substr(static_cast<std::size_t>(stop - name.data()));
    const bool isNumber = error == std::errc() && name.size() - rest.size() >= FEWEST_DIGITS;
    return isNumber && (rest.empty() || rest.front() == '.') ? std::optional(number) : std::nullopt;
}

/// The files that the rotation of a log has closed, the oldest first.
std::vector<std::string> olderFiles(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == path.npos ? "./" : path.substr(0, slash + 1);
    const std::string log = slash == path.npos ? path : path.substr(slash + 1);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
    std::vector<std::pair<std::uint64_t, std::string>> found;
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        if (const std::optional<std::uint64_t> number = numberIn(entry->d_name, log))
            found.emplace_back(*number, (slash == path.npos ? "" : folder) + entry->d_name);
    }
    // Sorted by name where a number stands twice: the file before its compression, which may not be complete.
    std::ranges::sort(found);
    const auto isSame = [](const auto& a, const auto& b) { return a.first == b.first; };
    found.erase(std::unique(found.begin(), found.end(), isSame), found.end());
    std::vector<std::string> paths;
    paths.reserve(found.size());
    for (auto& [number, name] : found)
        paths.push_back(std::move(name));
    return paths;
}

std::int64_t sizeOf(const std::string& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

bool isSocket(const std::string& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

} // namespace

Source::Source(const std::string& path, Access access)
    : m_path(path)
    , m_access(access)
    , m_name(path == "-" ? Text(STANDARD_INPUT()) : Text(path))
{
    if (path == "-") {
        requireStream(STDIN_FILENO);
        m_file = STDIN_FILENO;
        return;
    }
    if (KafkaAddress::isOne(path)) {
        m_topic = std::make_unique<Topic>(path, access.follows);
        m_name = m_topic->getName();
        return;
    }
    std::vector<std::string> files;
    if (access.older)
        files = olderFiles(path);
    if (access.follows) {
        const std::vector<std::string> older = olderFiles(path);
        m_newestAtStart = older.empty() ? "" : older.back();
    }
    if (files.empty() || access.follows || ::access(path.c_str(), F_OK) == 0)
        files.push_back(path);
    m_size = 0;
    for (const std::string& each : files) {
        const std::int64_t size = sizeOf(each);
        m_size = size < 0 || m_size < 0 ? -1 : m_size + size;
    }
    m_waiting.assign(files.begin(), files.end());
    advance();
}

Source::~Source()
{
    if (m_program > 0) {
        ::close(m_output);
        waitpid(m_program, nullptr, 0);
    }
    if (m_file > STDIN_FILENO)
        ::close(m_file);
}

bool Source::open(const std::string& path)
{
    m_open = path;
    if (isSocket(path)) {
        openServer(path);
        return true;
    }
    const int file = openFile(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 && errno == ENOENT && m_access.follows)
        return false;
    if (file < 0)
        fail(textOfError(errno));
    close();
    m_file = file;
    m_bytes = 0;
    m_wasReplaced = false;
    struct stat status { };
    if (fstat(m_file, &status) != 0)
        fail(textOfError(errno));
    if (S_ISDIR(status.st_mode))
        throw Failure(path, IS_FOLDER());
    m_identity = {status.st_dev, status.st_ino};
    m_programName = S_ISREG(status.st_mode) ? programFor(m_file) : nullptr;
    if (m_programName != nullptr)
        startProgram();
    return true;
}

/// Asks for the last entries. The first line of the answer says how many there are.
void Source::openServer(const std::string& path)
{
    close();
    m_file = openLocalSocket(path);
    m_isServer = true;
    if (const int error = connectLocalSocket(m_file, path); error != 0)
        fail(textOfError(error));
    const std::string request = m_access.follows ? "tail follow\n" : "tail\n";
    if (::send(m_file, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size()))
        fail(textOfError(errno));
    constexpr std::size_t MOST = 100;
    std::string line;
    for (char byte = 0; line.size() < MOST && ::read(m_file, &byte, 1) == 1 && byte != '\n';)
        line += byte;
    const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), m_kept);
    if (error != std::errc() || stop != line.data() + line.size())
        throw Failure(path, NO_TAIL(line));
}

/// After the entries that are kept, does not wait for more.
std::size_t Source::readServer(char* bytes, std::size_t size)
{
    for (;;) {
        const ssize_t count = ::recv(m_file, bytes, size, m_kept > 0 || !m_access.follows ? 0 : MSG_DONTWAIT);
        if (count > 0) {
            m_kept -= std::min(m_kept, static_cast<std::size_t>(std::count(bytes, bytes + count, '\n')));
            return static_cast<std::size_t>(count);
        }
        if (count < 0 && errno == EINTR)
            continue;
        m_wasReplaced = count == 0 || errno != EAGAIN; // the server has stopped
        return 0;
    }
}

void Source::startProgram()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        fail(textOfError(errno));
    std::string program = m_programName, decompress = "-dc";
    char* const arguments[] = {program.data(), decompress.data(), nullptr};
    const int error = spawn(m_program, arguments, m_file, ends[1]);
    ::close(ends[1]);
    m_output = ends[0];
    if (error != 0) {
        m_program = -1;
        ::close(std::exchange(m_output, -1));
        throw Failure(m_open, NO_PROGRAM(m_programName, textOfError(error)));
    }
}

void Source::close()
{
    if (m_file < 0)
        return;
    if (m_output >= 0)
        ::close(std::exchange(m_output, -1));
    if (m_program > 0)
        waitpid(std::exchange(m_program, -1), nullptr, 0);
    struct stat status { };
    if (fstat(m_file, &status) == 0)
        m_closedBytes += status.st_size;
    ::close(std::exchange(m_file, -1));
}

std::size_t Source::read(char* bytes, std::size_t size)
{
    if (m_topic != nullptr) {
        const std::size_t count = m_topic->read(bytes, size);
        m_bytes += static_cast<std::int64_t>(count);
        return count;
    }
    if (m_file < 0)
        return 0;
    if (m_isServer)
        return readServer(bytes, size);
    for (;;) {
        const ssize_t count = ::read(m_output >= 0 ? m_output : m_file, bytes, size);
        if (count > 0) {
            m_bytes += count;
            return static_cast<std::size_t>(count);
        }
        if (count == 0) {
            endProgram();
            return 0;
        }
        if (errno != EINTR)
            fail(textOfError(errno));
    }
}

void Source::endProgram()
{
    if (m_program <= 0)
        return;
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(m_program, &status, 0)) < 0 && errno == EINTR)
        ;
    m_program = -1;
    if (ended > 0 && status != 0)
        throw Failure(m_open, DECOMPRESSION(m_programName));
}

bool Source::isAtEnd()
{
    if (m_topic != nullptr)
        return !m_access.follows;
    if (m_isServer)
        return m_wasReplaced;
    if (!mayAdvance() || m_wasReplaced || m_file < 0 || m_output >= 0 || !m_waiting.empty())
        return true;
    m_wasReplaced = isReplaced();
    return false; // a last look: something may have been written before the replacement
}

bool Source::isReplaced()
{
    struct stat now {
    }, mine {};
    if (fstat(m_file, &mine) == 0 && mine.st_size < m_bytes) { // truncated: it begins anew
        m_bytes = 0;
        lseek(m_file, 0, SEEK_SET);
        return false;
    }
    if (stat(m_path.c_str(), &now) != 0)
        return false; // a rotation is under way, which creates the file in its next step
    return now.st_dev != m_identity.device || now.st_ino != m_identity.inode;
}

void Source::takeNewFiles()
{
    // The log may have been rotated more than once since the open file was current, or since it was looked for first.
    std::vector<std::string> older = olderFiles(m_path);
    const auto isKnown = [this](const std::string& path) {
        struct stat status { };
        return m_file < 0 ? path == m_newestAtStart
                          : stat(path.c_str(), &status) == 0 && status.st_dev == m_identity.device
                && status.st_ino == m_identity.inode;
    };
    const auto known = std::ranges::find_if(older, isKnown);
    const bool takesAll = m_file < 0 && m_newestAtStart.empty();
    if (known != older.end() || takesAll)
        m_waiting.assign(takesAll ? older.begin() : known + 1, older.end());
    m_waiting.push_back(m_path);
}

bool Source::advance()
{
    if (m_path == "-" || m_topic != nullptr)
        return false;
    const bool isFirst = m_file < 0 && m_waiting.size() == 1;
    if (mayAdvance() && (isFirst || (m_waiting.empty() && m_wasReplaced))) {
        m_waiting.clear();
        takeNewFiles();
    }
    if (m_waiting.empty())
        return false;
    if (!open(m_waiting.front()))
        return false;
    m_waiting.pop_front();
    return true;
}

bool Source::skipToEnd(std::int64_t size)
{
    if (m_path == "-" || m_topic != nullptr)
        return false;
    while (!m_waiting.empty() && advance())
        ;
    struct stat status { };
    if (m_output >= 0 || fstat(m_file, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= size)
        return false;
    m_bytes = status.st_size - size;
    return lseek(m_file, m_bytes, SEEK_SET) == m_bytes;
}

std::int64_t Source::getPosition() const
{
    if (m_output < 0)
        return m_closedBytes + m_bytes;
    return m_closedBytes + lseek(m_file, 0, SEEK_CUR); // what the program has read: the position is shared
}

void Source::fail(const std::string& why) const
{
    throw Failure(m_path == "-" ? m_name : Text(m_open), why);
}

} // namespace vxview
