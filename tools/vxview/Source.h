#pragma once

#include "Topic.h"
#include "common/Messages.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vxview {

/// How a log is opened.
struct Access {
    bool older = false; ///< also the files that a rotation has closed
    bool follows = false; ///< goes on when the log grows or is replaced
};

/// The bytes of one log: a file, the older files of a rotated one, standard input, a topic of Kafka, or what a running
/// server tells at its socket. Compressed files are read through the program that decompresses them.
class Source {
public:
    /// "-" is standard input. Throws Failure that names the file.
    Source(const std::string& path, Access access);
    ~Source();
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// Reads up to `size` bytes. 0 at the end of a file, or if there is nothing more at the moment.
    std::size_t read(char* bytes, std::size_t size);
    /// After `read` has returned 0: whether nothing will ever be added to the file.
    bool isAtEnd();
    /// Goes on with the next file of the log. False if there is none (yet).
    bool advance();
    /// Whether `advance` may succeed later.
    bool mayAdvance() const { return m_access.follows && m_path != "-" && m_topic == nullptr && !m_isServer; }
    /// Whether a log that is followed has not been there yet.
    bool isMissing() const { return m_file < 0 && m_topic == nullptr; }
    /// Continues `size` bytes before the end of the last file. False if it is not longer, or compressed.
    bool skipToEnd(std::int64_t size);

    const vxtools::Text& getName() const { return m_name; }
    /// The sum of the sizes of all files; -1 if it is not known.
    std::int64_t getSize() const { return m_size; }
    /// How many bytes of them have been read.
    std::int64_t getPosition() const;

private:
    struct Identity {
        dev_t device;
        ino_t inode;
    };

    /// False if a file that is followed is not there.
    bool open(const std::string& path);
    void openServer(const std::string& path);
    std::size_t readServer(char* bytes, std::size_t size);
    void startProgram();
    void close();
    /// Ends the program that decompresses. Throws Failure if it failed.
    void endProgram();
    void takeNewFiles();
    bool isReplaced();
    [[noreturn]] void fail(const std::string& why) const;

    const std::string m_path;
    const Access m_access;
    vxtools::Text m_name;
    std::unique_ptr<Topic> m_topic; ///< instead of files
    std::deque<std::string> m_waiting; ///< the files after the open one
    std::string m_newestAtStart; ///< of the older files
    std::string m_open; ///< the path of the open file
    int m_file = -1;
    int m_output = -1; ///< of the program that decompresses; -1 without one
    pid_t m_program = -1;
    const char* m_programName = nullptr;
    Identity m_identity {};
    bool m_isServer = false;
    std::size_t m_kept = 0; ///< entries that the server still sends at once
    bool m_wasReplaced = false;
    std::int64_t m_size = -1;
    std::int64_t m_closedBytes = 0;
    std::int64_t m_bytes = 0; ///< read from the open file
};

} // namespace vxview
