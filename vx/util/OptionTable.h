#pragma once

#include "vx/Exception.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vx::util {

namespace detail {
struct OptionRows;
}

/// One option of a program. The table stores the pointers, so the texts must outlive it; usually they are literals.
struct OptionRow {
    enum class Takes { ANY, FILES, FOLDERS };

    const char* name; ///< long, without dashes
    char letter = '\0'; ///< the short form, if there is one
    /// The name of the value in the help text; null for an option without a value. If it contains bars, as "plain|xml"
    /// does, it lists the only values that are accepted.
    const char* value = nullptr;
    const char* standard = nullptr; ///< the default value; null for none
    const char* help = ""; ///< in UTF-8; a line feed begins a new line
    const char* group = nullptr; ///< the heading in the help text; adjacent rows with the same one are a group
    Takes takes = Takes::ANY; ///< what a shell offers as values
};

/// A command line that does not match its table. The description is one line to print: "vxlog: unknown option --foo;
/// see --help". What is not UTF-8 in it becomes U+FFFD, and control characters become blanks.
class VX_API OptionException : public Exception {
public:
    /// What is wrong, and what `getDetail` returns then.
    enum class Fault {
        UNKNOWN, ///< nothing
        AMBIGUOUS, ///< the options that begin so: "--level, --lines"
        MISSING, ///< nothing
        VALUE_MISSING, ///< nothing
        VALUE_NOT_TAKEN, ///< the value
        NO_SUCH_VALUE, ///< the value
        NO_NUMBER ///< the value
    };

    /// `why` completes a sentence that begins with the program's name.
    OptionException(
        const std::string& program, Fault fault, std::string option, std::string detail, const std::string& why);
    ~OptionException() noexcept override;

    Fault getFault() const { return m_fault; }
    /// What the user wrote, "--foo" or "-x". The name from the table if the option is missing.
    const std::string& getOption() const { return m_option; }
    const std::string& getDetail() const { return m_detail; }

private:
    Fault m_fault;
    std::string m_option;
    std::string m_detail;
};

/// The options and arguments of a command line. Texts are its bytes: a file name need not be UTF-8.
///
/// The name of an option that is not in the table throws Exception: it is an error of the program.
class VX_API ParsedOptions {
public:
    struct Given {
        const OptionRow* row; ///< valid as long as this object or the table exists
        std::string value; ///< empty for an option without a value
        std::string written; ///< "--level", "-l"
    };

    bool has(std::string_view name) const { return getCount(name) > 0; }
    /// How often the option occurs.
    std::size_t getCount(std::string_view name) const;
    /// The last value of the option, or else its default.
    std::optional<std::string> find(std::string_view name) const;
    /// As above, but throws OptionException if there is neither: the option is required.
    std::string get(std::string_view name) const;
    /// All values of the option, in their order.
    std::vector<std::string> getAll(std::string_view name) const;
    /// `get` as a number in decimal. Throws OptionException, which names the option and the limits, for any other text.
    template <std::integral Number>
    Number getNumber(std::string_view name, Number least = std::numeric_limits<Number>::min(),
        Number most = std::numeric_limits<Number>::max()) const;

    /// All options in the order of the command line.
    const std::vector<Given>& getGiven() const;
    /// The arguments that are no options, in their order.
    const std::vector<std::string>& getArguments() const;

private:
    friend class OptionTable;

    explicit ParsedOptions(std::shared_ptr<const detail::OptionRows> table);
    const Given* lastOf(const OptionRow& row) const;
    std::int64_t getSigned(std::string_view name, std::int64_t least, std::int64_t most) const;
    std::uint64_t getUnsigned(std::string_view name, std::uint64_t least, std::uint64_t most) const;
    template <class Number>
    Number numberOf(std::string_view name, Number least, Number most) const;

    struct Content;

    std::shared_ptr<Content> m_content; ///< shared by all copies, and never changed after `parse`
};

/// The options of a program, declared once: for parsing, for the text of --help and for the completion of a shell.
///
/// The forms are those of POSIX with long names: `--name value`, `--name=value`, `-nvalue`, `-n value`, several letters in
/// one (`-abc`), and `--` before arguments that begin with a dash. The beginning of a long name is enough where no other
/// name begins so. "-" alone is an argument, and so is a path that begins with a slash.
///
/// @code
/// const util::OptionTable table("greet",
///     {{.name = "name", .letter = 'n', .value = "NAME", .standard = "world", .help = "whom to greet"},
///         {.name = "times", .value = "N", .standard = "1", .help = "how often"}});
/// const char* const line[] = {"greet", "--times=2", "-nOle", "/tmp/out"};
/// const util::ParsedOptions options = table.parse(4, line);
/// assert(options.get("name") == "Ole" && options.getNumber<int>("times", 1, 9) == 2);
/// assert(options.getArguments() == std::vector<std::string> {"/tmp/out"});
/// assert(table.getHelp() == "  -n, --name=NAME  whom to greet (world)\n"
///                           "      --times=N    how often (1)\n");
/// @endcode
class VX_API OptionTable {
public:
    enum class Order {
        MIXED, ///< options may follow arguments
        OPTIONS_FIRST ///< the first argument ends the options, for example if a command follows
    };
    enum class Faults {
        THROWN,
        SKIPPED ///< ignores what does not match, for example to find the language of messages in any command line
    };
    enum class Shell { BASH, ZSH, FISH };
    /// The text of a row in another language.
    using Translation = std::function<std::string(const OptionRow& row)>;

    /// Throws Exception if two rows have the same name or letter.
    OptionTable(std::string program, std::vector<OptionRow> rows);

    /// `arguments` are those of `main`, the program's name included. Throws OptionException.
    ParsedOptions parse(
        int count, const char* const* arguments, Order order = Order::MIXED, Faults faults = Faults::THROWN) const;

    /// The option that a user wrote as `written`: "--level", the beginning "--lev", or "-l". Null if no option has that form,
    /// or more than one. Valid as long as the table exists.
    const OptionRow* findRow(std::string_view written) const;

    /// The help on all options, in lines of at most 80 characters. The default of an option is added in parentheses.
    std::string getHelp(const Translation& helpOf = {}) const;
    /// A script with which `shell` completes the options of the program. It offers `words` for the first argument, and
    /// file names for all others.
    std::string getCompletion(Shell shell, std::span<const std::string_view> words = {}) const;

private:
    std::shared_ptr<const detail::OptionRows> m_table;
};

template <std::integral Number>
Number ParsedOptions::getNumber(std::string_view name, Number least, Number most) const
{
    if constexpr (std::is_signed_v<Number>)
        return static_cast<Number>(getSigned(name, least, most));
    else
        return static_cast<Number>(getUnsigned(name, least, most));
}

} // namespace vx::util
