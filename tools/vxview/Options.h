#pragma once

#include "Filter.h"
#include "Printer.h"
#include "Source.h"
#include "common/Messages.h"

#include <vx/util/OptionTable.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxview {

struct Options {
    enum class Task { PRINT, COUNT, SUMMARY, HELP, VERSION, COMPLETION };

    Task task = Task::PRINT;
    std::vector<std::string> logs {"-"};
    Access access;
    Filter filter;
    Printer::Settings printer;
    std::optional<std::int64_t> last; ///< only so many entries at the end
    std::string summaryBy = "level";
    bool merges = true; ///< several logs by time, and not one after the other
    bool hasPager = true;
    std::string shell; ///< that of a completion
};

const vx::util::OptionTable& optionTable();

/// Throws UsageError that says what is wrong with the command line.
Options parseOptions(int argc, char** argv);

std::string usage(vxtools::Messages& messages);

} // namespace vxview
