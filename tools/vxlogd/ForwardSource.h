#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace vxlogd {

/// How far a log was forwarded. It is kept in a file beside the log.
struct ForwardPosition {
    std::string id; ///< of all that is forwarded with this position: 32 hexadecimal digits
    std::uint64_t lines = 0; ///< forwarded so far
    // The file of the log, and what was forwarded of it.
    dev_t device = 0;
    ino_t inode = 0;
    std::uint64_t number = 0; ///< that its name has after it was rotated
    std::int64_t offset = 0;
    std::uint64_t start = 0; ///< a hash of its first bytes, because the system uses inodes again
    std::string clients {}; ///< how far they were then, if they wait for the brokers: `Clients::save`

    /// Nothing if there is no such file. Throws Failure if it cannot be read.
    static std::optional<ForwardPosition> load(const std::string& path);
    /// A crash leaves the old or the new position. Throws Failure.
    void save(const std::string& path) const;
};

/// One file of a log. It stays open until all of it is forwarded, even if it is removed.
class LogPart {
public:
    LogPart(int descriptor, dev_t dev, ino_t ino, std::uint64_t rotated);
    ~LogPart();
    LogPart(const LogPart&) = delete;
    LogPart& operator=(const LogPart&) = delete;

    const int file;
    const dev_t device;
    const ino_t inode;
    const std::uint64_t number;

    static constexpr std::int64_t START = 256;
    /// What stands before `offset`, at most the first `START` bytes, and its hash.
    std::string readStart(std::int64_t offset) const;
    std::uint64_t hashStart(std::int64_t offset) const;
    std::int64_t size() const;
};

/// Reads the lines of a log that other threads or processes write and rotate.
class ForwardSource {
public:
    /// Begins where `position` ends, or without one at the start of the current file. The file need not be there yet.
    /// `complains` is whether to tell what is missing.
    ForwardSource(std::string path, const std::optional<ForwardPosition>& position, bool complains = true);

    struct Line {
        std::string_view text; ///< without its end; valid until the next call
        std::shared_ptr<const LogPart> part;
        std::int64_t end; ///< of the line, in the file
    };
    /// The next whole line; nothing if there is none yet.
    std::optional<Line> next();

    /// Files that were removed before they could be read to the end.
    std::uint64_t lostFiles() const { return m_lostFiles; }
    /// The bytes after `offset` of the file `part`, and those of the files after it.
    std::int64_t countBytesAfter(const LogPart* part, std::int64_t offset) const;
    const std::shared_ptr<const LogPart>& part() const { return m_part; }

private:
    std::shared_ptr<const LogPart> open(const std::string& path, std::uint64_t number) const;
    std::shared_ptr<const LogPart> openCurrent() const;
    bool find(const ForwardPosition& position);
    bool findNext();
    bool isCut();
    void begin(std::shared_ptr<const LogPart> part, std::int64_t offset);
    std::size_t readMore();

    const std::string m_path;
    const bool m_complains;
    std::shared_ptr<const LogPart> m_part; ///< null if there is no file yet
    std::shared_ptr<const LogPart> m_next; ///< the file after it, once nothing more is written to the first
    std::string m_bytes;
    std::size_t m_begin = 0; ///< of the next line in these bytes
    std::size_t m_searched = 0; ///< there is no end of a line before this place
    std::int64_t m_offset = 0; ///< of the bytes in the file
    std::string m_start; ///< the first bytes of the file, as far as they were read
    std::uint64_t m_lostFiles = 0;
};

} // namespace vxlogd
