#pragma once

#include "common/Messages.h"
#include "common/TlsContext.h"

#include <vx/io/RotatingFileStream.h>
#include <vx/util/OptionTable.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace vxlogd {

enum class Format { PLAIN, XML, JSON };
/// Who has to have a line before its client hears so.
enum class ForwardAck { LOG, BROKERS };

struct Settings {
    std::string listen = "localhost";
    unsigned short port = 7514;
    std::string log = "vxlogd.log";
    Format format = Format::PLAIN;
    std::string encoding = "UTF-8";
    int workers = 1;
    int level = 0;
    std::size_t maxLine = 8192;
    unsigned int idleSeconds = 300;
    std::size_t maxConnections = 1024;
    std::size_t backlog = 32 * 1024 * 1024;
    bool sync = false;
    std::string statusSocket; ///< empty for the path beside the log
    vxtools::TlsFiles tls; ///< with a certificate, all connections are encrypted
    std::string http; ///< "127.0.0.1:8080", where the page is; empty for nowhere
    std::string httpToken; ///< file
    std::string httpHost; ///< names of this machine, with commas
    vx::io::Rotation rotation;
    std::string forward; ///< the URI of a topic to which the log is also sent; empty for none
    ForwardAck forwardAck = ForwardAck::LOG;
};

inline bool rotates(const Settings& settings)
{
    return settings.rotation.mostBytes > 0 || settings.rotation.every != vx::io::Rotation::Every::NEVER;
}

/// Whether this is the encoding, by any of its names.
bool isUtf8(const Settings& settings);

/// Where the server answers about its state; empty for nowhere.
std::string statusPath(const Settings& settings);

enum class Task { SERVE, CHECK_CONFIG, STATUS, METRICS, HELP, VERSION, COMPLETION };

struct CommandLine {
    Task task = Task::SERVE;
    Settings settings;
    std::vector<vxtools::Text> problems; ///< all that is wrong with the settings, for CHECK_CONFIG only
    std::map<std::string, std::string> places; ///< where a setting is given: "vxlogd.ini:3: log" or "--log"
    std::string shell; ///< that of a completion
};

const vx::util::OptionTable& optionTable();

/// Options override the file that the command line names, and the file overrides the defaults. Throws
/// vxtools::UsageError that says what is wrong.
CommandLine readSettings(int argc, char** argv);

/// The names of the settings that differ, and take effect only when the server is started.
std::vector<std::string> changesForRestart(const Settings& before, const Settings& now);

/// The effective settings in the form of their file.
std::string textOf(const Settings& settings);

/// What --help prints.
std::string usage(vxtools::Messages& messages);

} // namespace vxlogd
