#pragma once

#include <vx/util/OptionTable.h>

#include <string>

namespace vxconv {

struct Options {
    enum class Task { CONVERT, LIST, HELP, VERSION, COMPLETION };

    Task task = Task::CONVERT;
    std::string from = "UTF-8";
    std::string to = "UTF-8";
    bool lines = false;
    bool strict = false;
    std::string input = "-";
    std::string output = "-";
    std::string shell = {}; ///< that of a completion
};

const vx::util::OptionTable& optionTable();

/// Throws UsageError that says what is wrong with the command line.
Options parseOptions(int argc, char** argv);

std::string usage();

} // namespace vxconv
