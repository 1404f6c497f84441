#pragma once

#include "Destination.h"
#include "common/Messages.h"

#include <vx/io/RotatingFileStream.h>
#include <vx/log/Logger.h>
#include <vx/util/OptionTable.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace vxlog {

struct Options {
    enum class Task { LOG, HELP, VERSION, COMPLETION };
    enum class Format { PLAIN, XML, JSON };

    Task task = Task::LOG;
    std::string file = "-";
    std::optional<unsigned int> mode; ///< of a new file
    Format format = Format::PLAIN;
    bool escape = false;
    int level = 0;
    std::string levelFrom; ///< see Levels; empty: each line has the level above
    int leastLevel = std::numeric_limits<int>::min();
    int mostLevel = std::numeric_limits<int>::max();
    std::optional<std::string> name;
    std::optional<std::vector<std::string>> fields; ///< none: the logger's default
    int workers = 0; ///< 0: without a queue
    vx::log::Logger::Times times = vx::log::Logger::Times::RFC_3339;
    vx::io::Rotation rotation;
    std::string encoding = "UTF-8";
    std::string input = "-";
    std::string shell; ///< that of a completion
    std::optional<Destination> to; ///< send the lines there instead of writing a log
    std::string spool; ///< the folder where they wait for the server; empty: memory
    std::int64_t spoolBytes = std::int64_t {256} << 20;
};

/// The size of each buffer, in bytes or units.
inline constexpr std::int32_t BLOCK_SIZE = 64 * 1024;

inline bool rotates(const Options& options)
{
    return options.rotation.mostBytes > 0 || options.rotation.every != vx::io::Rotation::Every::NEVER;
}

const vx::util::OptionTable& optionTable();

/// Throws UsageError that says what is wrong with the command line.
Options parseOptions(int argc, char** argv);

std::string usage(vxtools::Messages& messages);

} // namespace vxlog
