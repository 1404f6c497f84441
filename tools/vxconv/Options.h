#pragma once

#include "common/Messages.h"

#include <vx/util/OptionTable.h>

#include <string>
#include <vector>

namespace vxconv {

struct Options {
    enum class Task { CONVERT, LIST, HELP, VERSION, COMPLETION };

    Task task = Task::CONVERT;
    std::string from = "UTF-8";
    std::string to = "UTF-8";
    std::string fallback = "CP1252";
    bool lines = false;
    bool strict = false;
    bool verbose = false;
    std::vector<std::string> inputs = {};
    std::string output = "-";
    std::string toFolder = {}; ///< empty: none
    bool inPlace = false;
    std::string shell = {}; ///< that of a completion

    bool isAuto() const { return from == "auto"; }
};

const vx::util::OptionTable& optionTable();

/// Throws UsageError that says what is wrong with the command line.
Options parseOptions(int argc, char** argv);

std::string usage(vxtools::Messages& messages);

} // namespace vxconv
