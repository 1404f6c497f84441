#pragma once

#include "common/Failure.h"
#include "common/Program.h"

#include <vx/util/OptionTable.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxtools {

/// The options of a program: its own, and after them those that every program has: --locale, --completion, --help and
/// --version.
vx::util::OptionTable makeOptionTable(const char* program, std::vector<vx::util::OptionRow> rows);

/// What --locale names in a command line, which may have errors.
std::optional<std::string> localeOf(const vx::util::OptionTable& table, int argc, char** argv);

/// The help text of the options. The key of an option's text is `prefix` and its name; that of an option that every
/// program has begins with "tools.help." instead.
std::string helpOf(const vx::util::OptionTable& table, std::u16string_view prefix, Messages& messages);

/// Throws UsageError.
vx::util::ParsedOptions parseCommandLine(const vx::util::OptionTable& table, int argc, char** argv,
    vx::util::OptionTable::Order order = vx::util::OptionTable::Order::MIXED);

/// The only argument, `otherwise` if there is none. Throws UsageError for more.
std::string inputOf(const vx::util::ParsedOptions& options, const std::string& otherwise);

/// The value of an option of the command line. Throws UsageError.
std::int64_t numberOf(
    const vx::util::ParsedOptions& options, std::string_view name, std::int64_t least, std::int64_t most);

/// Prints what --completion asks for.
void printCompletion(
    const vx::util::OptionTable& table, const std::string& shell, std::span<const std::string_view> words = {});

/// Prints what --help, --version or --completion asks for. False if `options.task` is another task. `usage` gives the
/// text of the help.
template <class Options, class Usage>
bool tellAboutProgram(const char* name, const vx::util::OptionTable& table, const Options& options, Usage&& usage)
{
    using Task = decltype(options.task);
    switch (options.task) {
    case Task::HELP:
        print(usage());
        return true;
    case Task::VERSION:
        printVersion(name);
        return true;
    case Task::COMPLETION:
        printCompletion(table, options.shell);
        return true;
    default:
        return false;
    }
}

} // namespace vxtools
