#pragma once

#include "Sender.h"
#include "common/Messages.h"

#include <vx/io/RotatingFileStream.h>
#include <vx/log/Logger.h>
#include <vx/util/OptionTable.h>

#include <optional>
#include <string>
#include <vector>

namespace vxlog {

struct Options {
    enum class Task { LOG, HELP, VERSION, COMPLETION };
    enum class Format { BASIC, XML, JSON };

    Task task = Task::LOG;
    std::string file = "-";
    Format format = Format::BASIC;
    bool escape = false;
    int level = 0;
    std::optional<std::string> name;
    std::optional<std::vector<std::string>> fields; ///< none: the logger's default
    int workers = 0; ///< 0: without a queue
    vx::log::Logger::Times times = vx::log::Logger::Times::RFC_3339;
    vx::io::Rotation rotation;
    std::string encoding = "UTF-8";
    std::string input = "-";
    std::string shell; ///< that of a completion
    std::optional<Destination> to; ///< send the lines there instead of writing a log
};

inline bool rotates(const Options& options)
{
    return options.rotation.mostBytes > 0 || options.rotation.every != vx::io::Rotation::Every::NEVER;
}

const vx::util::OptionTable& optionTable();

/// The locale of the messages. Found even if the rest of the command line is wrong.
std::optional<std::string> localeOf(int argc, char** argv);

/// Throws UsageError that says what is wrong with the command line.
Options parseOptions(int argc, char** argv);

std::string usage(vxtools::Messages& messages);

} // namespace vxlog
