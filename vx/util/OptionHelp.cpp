#include "vx/util/detail/OptionRows.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace vx::util {

namespace {

constexpr std::size_t WIDTH = 80;
constexpr std::size_t FARTHEST_COLUMN = 32;

/// Characters, not bytes.
std::size_t widthOf(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) >> 6) != 2; }));
}

/// "  -f, --file=FILE"
std::string formsOf(const OptionRow& row)
{
    std::string forms = row.letter != '\0' ? std::string("  -") + row.letter + ", --" : std::string("      --");
    forms += row.name;
    return row.value != nullptr ? forms + '=' + row.value : forms;
}

/// Appends `text`, which begins where the last line of `target` ends.
void appendWrapped(std::string& target, std::string_view text, std::size_t column)
{
    const std::string nextLine = '\n' + std::string(column, ' ');
    std::size_t used = column;
    for (bool isFirst = true; !text.empty(); isFirst = false) {
        const std::size_t end = std::min(text.find_first_of(" \n"), text.size());
        const std::string_view word = text.substr(0, end);
        if (!isFirst && used > column && used + 1 + widthOf(word) > WIDTH) {
            target += nextLine;
            used = column;
        }
        if (used > column) {
            target += ' ';
            ++used;
        }
        target += word;
        used += widthOf(word);
        if (end < text.size() && text[end] == '\n') {
            target += nextLine;
            used = column;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    target += '\n';
}

std::string replaced(std::string_view text, std::string_view old, std::string_view instead)
{
    std::string result;
    for (std::size_t at = text.find(old); at != text.npos; at = text.find(old)) {
        result.append(text.substr(0, at)).append(instead);
        text.remove_prefix(at + old.size());
    }
    return result.append(text);
}

/// The help of a row on one line.
std::string lineOf(const OptionRow& row)
{
    return replaced(row.help, "\n", " ");
}

std::string joined(std::span<const std::string_view> words)
{
    std::string text;
    for (const std::string_view word : words)
        text.append(text.empty() ? "" : " ").append(word);
    return text;
}

/// The name of a function of a shell.
std::string functionOf(const detail::OptionRows& table)
{
    std::string function = "_" + table.program;
    std::replace_if(
        function.begin(), function.end(), [](unsigned char byte) { return std::isalnum(byte) == 0; }, '_');
    return function;
}

/// The forms of all options with a value, such as "--from -f --to".
std::string formsBeforeValues(const detail::OptionRows& table, std::string_view between)
{
    std::string forms;
    for (const OptionRow& row : table.rows) {
        if (row.value == nullptr)
            continue;
        forms.append(forms.empty() ? "" : between).append("--").append(row.name);
        if (row.letter != '\0')
            forms.append(between).append("-") += row.letter;
    }
    return forms;
}

/// Offers `words` unless an argument is to the left of the cursor. The values of options are no arguments.
std::string completeFirstArgumentInBash(const detail::OptionRows& table, std::string_view words)
{
    std::string script = "    local at isFirst=1\n"
                         "    for ((at = 1; at < COMP_CWORD; ++at)); do\n"
                         "        case ${COMP_WORDS[at]} in\n";
    if (const std::string forms = formsBeforeValues(table, "|"); !forms.empty())
        script += "            " + forms + ") [[ ${COMP_WORDS[++at]} == = ]] && ((++at)) ;;\n";
    return script
        + "            -?*) ;;\n"
          "            *) isFirst= ;;\n"
          "        esac\n"
          "    done\n"
          "    if [[ $isFirst ]]; then\n"
          "        mapfile -t COMPREPLY < <(compgen -W '"
        + std::string(words)
        + "' -- \"$word\")\n"
          "        return\n"
          "    fi\n";
}

std::string completeInBash(const detail::OptionRows& table, std::string_view words)
{
    const std::string function = functionOf(table);
    std::string forms;
    std::string cases;
    for (const OptionRow& row : table.rows) {
        forms += std::string(forms.empty() ? "--" : " --") + row.name + (row.value != nullptr ? "=" : "");
        if (row.value == nullptr)
            continue;
        cases += std::string("    --") + row.name + (row.letter != '\0' ? std::string("|-") + row.letter : "") + ")\n";
        if (const std::vector<std::string_view> values = detail::wordsOf(row); !values.empty())
            cases += "        mapfile -t COMPREPLY < <(compgen -W '" + joined(values) + "' -- \"$word\")\n";
        else if (row.takes != OptionRow::Takes::ANY)
            cases += std::string("        compopt -o filenames 2>/dev/null\n        mapfile -t COMPREPLY < <(compgen ")
                + (row.takes == OptionRow::Takes::FILES ? "-f" : "-d") + " -- \"$word\")\n";
        cases += "        return ;;\n";
    }
    std::string script = function
        + "()\n{\n"
          "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
          "    COMPREPLY=()\n"
          "    if [[ $word == = ]]; then # the shell takes --name=value for three words\n"
          "        word=\n"
          "    elif [[ $before == = ]]; then\n"
          "        before=${COMP_WORDS[COMP_CWORD-2]}\n"
          "    fi\n"
          "    case $before in\n"
        + cases
        + "    esac\n"
          "    if [[ $word == -* ]]; then\n"
          "        mapfile -t COMPREPLY < <(compgen -W '"
        + forms
        + "' -- \"$word\")\n"
          "        [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null\n"
          "        return\n"
          "    fi\n";
    if (!words.empty())
        script += completeFirstArgumentInBash(table, words);
    return script
        + "    compopt -o filenames 2>/dev/null\n"
          "    mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
          "}\ncomplete -F "
        + function + ' ' + table.program + '\n';
}

std::string completeInZsh(const detail::OptionRows& table, std::string_view words)
{
    constexpr std::string_view QUOTE = "'\\''";
    std::string script = "#compdef " + table.program + "\n_arguments -s -S";
    for (const OptionRow& row : table.rows) {
        const bool takesValue = row.value != nullptr;
        const std::string form = std::string("--") + row.name + (takesValue ? "=" : "");
        std::string help = replaced(replaced(lineOf(row), "\\", "\\\\"), "]", "\\]");
        help = replaced(replaced(replaced(std::move(help), "[", "\\["), ":", "\\:"), "'", QUOTE);
        script += " \\\n    '*'";
        script += row.letter != '\0' ? std::string("{-") + row.letter + (takesValue ? "+," : ",") + form + '}' : form;
        script += "'[" + help + ']';
        if (takesValue) {
            const std::vector<std::string_view> values = detail::wordsOf(row);
            script += ":value:";
            script += !values.empty()                    ? '(' + joined(values) + ')'
                : row.takes == OptionRow::Takes::FILES   ? "_files"
                : row.takes == OptionRow::Takes::FOLDERS ? "_files -/"
                                                         : " ";
        }
        script += '\'';
    }
    if (!words.empty())
        script += " \\\n    '1:command:(" + std::string(words) + ")'";
    return script + " \\\n    '*:file:_files'\n";
}

/// A function that succeeds unless an argument is to the left of the cursor. The values of options are no arguments.
std::string isFirstArgumentInFish(const detail::OptionRows& table, const std::string& name)
{
    std::string script = "function " + name
        + "\n"
          "    set -l words (commandline -opc)\n"
          "    set -e words[1]\n"
          "    set -l isValue 0\n"
          "    for word in $words\n"
          "        if test $isValue = 1\n"
          "            set isValue 0\n"
          "            continue\n"
          "        end\n"
          "        switch $word\n";
    if (const std::string forms = formsBeforeValues(table, " "); !forms.empty())
        script += "            case " + forms + "\n                set isValue 1\n";
    return script
        + "            case -\n"
          "                return 1\n"
          "            case '-*'\n"
          "            case '*'\n"
          "                return 1\n"
          "        end\n"
          "    end\n"
          "    return 0\n"
          "end\n";
}

std::string completeInFish(const detail::OptionRows& table, std::string_view words)
{
    const std::string begin = "complete -c " + table.program;
    std::string script;
    for (const OptionRow& row : table.rows) {
        script += begin + (row.letter != '\0' ? std::string(" -s ") + row.letter : "") + " -l " + row.name;
        if (row.value != nullptr) {
            const std::vector<std::string_view> values = detail::wordsOf(row);
            script += !values.empty()                    ? " -x -a '" + joined(values) + '\''
                : row.takes == OptionRow::Takes::FILES   ? " -r -F"
                : row.takes == OptionRow::Takes::FOLDERS ? " -x -a '(__fish_complete_directories)'"
                                                         : " -x";
        }
        script += " -d '" + replaced(replaced(lineOf(row), "\\", "\\\\"), "'", "\\'") + "'\n";
    }
    if (!words.empty()) {
        const std::string function = '_' + functionOf(table) + "_is_first";
        script += isFirstArgumentInFish(table, function) + begin + " -n " + function + " -f -a '" + std::string(words)
            + "'\n";
    }
    return script;
}

} // namespace

std::string OptionTable::getHelp(const Translation& helpOf) const
{
    constexpr std::size_t GAP = 2;
    std::size_t column = 0;
    for (const OptionRow& row : m_table->rows) {
        if (const std::size_t wanted = widthOf(formsOf(row)) + GAP; wanted <= FARTHEST_COLUMN)
            column = std::max(column, wanted);
    }
    std::string text;
    std::string_view group;
    for (const OptionRow& row : m_table->rows) {
        if (const std::string_view own = row.group != nullptr ? row.group : ""; own != group) {
            text.append(text.empty() ? "" : "\n").append(own).append(own.empty() ? "" : ":\n");
            group = own;
        }
        const std::string forms = formsOf(row);
        const std::size_t width = widthOf(forms);
        text += forms;
        text += width + GAP <= column ? std::string(column - width, ' ') : '\n' + std::string(column, ' ');
        std::string help = helpOf ? helpOf(row) : row.help;
        if (row.standard != nullptr)
            help += std::string(" (") + row.standard + ')';
        appendWrapped(text, help, column);
    }
    return text;
}

std::string OptionTable::getCompletion(Shell shell, std::span<const std::string_view> words) const
{
    const std::string offered = joined(words);
    switch (shell) {
    case Shell::ZSH:
        return completeInZsh(*m_table, offered);
    case Shell::FISH:
        return completeInFish(*m_table, offered);
    case Shell::BASH:
        break;
    }
    return completeInBash(*m_table, offered);
}

} // namespace vx::util
