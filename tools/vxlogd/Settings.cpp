#include "Settings.h"

#include "common/Failure.h"
#include "common/FileName.h"
#include "common/Input.h"

#include <vx/TerminatedText.h>
#include <vx/util/IniFile.h>
#include <vx/util/IniFileException.h>
#include <vx/util/IniFileIterator.h>

#include <charconv>
#include <cstring>
#include <getopt.h>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace vxlogd {

namespace {

constexpr const char16_t* SET = u"vxlogd";

template <class Number>
Number numberIn(const std::string& text, Number least, Number most)
{
    Number number {};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most)
        throw std::invalid_argument(
            "\"" + text + "\" is no number from " + std::to_string(least) + " to " + std::to_string(most));
    return number;
}

std::string nonEmpty(const std::string& text)
{
    if (text.empty())
        throw std::invalid_argument("the text is empty");
    return text;
}

struct SettingRow {
    const char* name;
    const char* value;
    const char* help;
    void (*set)(Settings& settings, const std::string& text);
};

constexpr std::size_t MOST_LINE = 1024 * 1024;
constexpr std::size_t MOST_CONNECTIONS = 100'000;
constexpr unsigned int MOST_SECONDS = 7 * 24 * 3600;

constexpr SettingRow SETTINGS[] = {
    {"listen", "HOSTS", "where to listen, with commas; * is everywhere (localhost)",
        [](Settings& settings, const std::string& text) { settings.listen = nonEmpty(text); }},
    {"port", "PORT", "0 lets the system choose one (7514)",
        [](Settings& settings, const std::string& text) { settings.port = numberIn<unsigned short>(text, 0, 65535); }},
    {"log", "FILE", "the log, to which is appended (vxlogd.log)",
        [](Settings& settings, const std::string& text) { settings.log = nonEmpty(text); }},
    {"format", "plain|xml", "an old document is moved aside for a new one (plain)",
        [](Settings& settings, const std::string& text) {
            if (text != "plain" && text != "xml")
                throw std::invalid_argument("\"" + text + "\" is neither plain nor xml");
            settings.format = text == "xml" ? Format::XML : Format::PLAIN;
        }},
    {"encoding", "NAME", "the encoding of a plain log (UTF-8)",
        [](Settings& settings, const std::string& text) { settings.encoding = nonEmpty(text); }},
    {"workers", "COUNT", "threads that write the log; with one it keeps the order (1)",
        [](Settings& settings, const std::string& text) { settings.workers = numberIn(text, 1, 64); }},
    {"level", "LEVEL", "the level of lines whose client names none (0)",
        [](Settings& settings, const std::string& text) { settings.level = numberIn(text, -1'000'000, 1'000'000); }},
    {"max-line", "BYTES", "longer lines are cut (8192)",
        [](Settings& settings, const std::string& text) {
            settings.maxLine = numberIn<std::size_t>(text, 16, MOST_LINE);
        }},
    {"idle-timeout", "SECONDS", "of silence, after which a client is dropped; 0 is never (300)",
        [](Settings& settings, const std::string& text) {
            settings.idleSeconds = numberIn<unsigned int>(text, 0, MOST_SECONDS);
        }},
    {"max-connections", "COUNT", "more are closed at once (1024)",
        [](Settings& settings, const std::string& text) {
            settings.maxConnections = numberIn<std::size_t>(text, 1, MOST_CONNECTIONS);
        }},
    {"sync", "no|yes", "flush each entry to disk before it is acknowledged (no)",
        [](Settings& settings, const std::string& text) {
            if (text != "no" && text != "yes")
                throw std::invalid_argument("\"" + text + "\" is neither no nor yes");
            settings.sync = text == "yes";
        }},
};

void set(Settings& settings, const SettingRow& row, const std::string& text, const std::string& place)
{
    try {
        row.set(settings, text);
    } catch (const std::invalid_argument& failure) {
        throw std::invalid_argument(place + row.name + ": " + failure.what());
    }
}

void readFile(Settings& settings, const std::string& path)
{
    constexpr unsigned int LONGEST_VALUE = 512;
    try {
        const vxtools::Input readable(path); // throws the reason if it is not
        const vx::String name = vxtools::canonicalPath(path);
        vx::util::IniFile file(vx::TerminatedText(name), nullptr, 1);
        for (vx::util::IniFileKeyIterator keys(file, SET); keys.hasNext();) {
            const vx::String key = keys.next();
            char16_t value[LONGEST_VALUE];
            if (file.GetValue(SET, vx::TerminatedText(key), value, LONGEST_VALUE) != 0)
                throw std::invalid_argument(path + ": cannot be read");
            const SettingRow* row = std::begin(SETTINGS);
            while (row != std::end(SETTINGS) && !key.equals(vx::String(row->name), true))
                ++row;
            if (row == std::end(SETTINGS))
                throw std::invalid_argument(path + ": unknown setting " + key.toUtf8());
            set(settings, *row, vx::String(value).toUtf8(), path + ": ");
        }
    } catch (const vxtools::Failure& failure) {
        throw std::invalid_argument(failure.what());
    } catch (const vx::util::IniFileException& failure) {
        throw std::invalid_argument(path
            + (failure.GetType() == vx::util::IniFileException::TYPE_NO_SUCH_SET ? ": has no set [vxlogd]"
                                                                                 : ": cannot be opened"));
    }
}

} // namespace

CommandLine readSettings(int argc, char** argv)
{
    enum Letter { CONFIG = 'c', HELP = 'h', VERSION = 'V', FIRST_SETTING = 256 };
    std::vector<option> options = {
        {"config", required_argument, nullptr, CONFIG},
        {"help", no_argument, nullptr, HELP},
        {"version", no_argument, nullptr, VERSION},
    };
    for (const SettingRow& row : SETTINGS) {
        const auto number = static_cast<int>(&row - SETTINGS);
        options.push_back({row.name, required_argument, nullptr, FIRST_SETTING + number});
    }
    options.push_back({});

    CommandLine line;
    std::string config;
    struct Given {
        const SettingRow* row;
        std::string text;
    };
    std::vector<Given> given;
    opterr = 0;
    optind = 0; // the command line is parsed again after a SIGHUP
    for (int found; (found = ::getopt_long(argc, argv, ":c:hV", options.data(), nullptr)) != -1;) {
        if (found == CONFIG)
            config = optarg;
        else if (found == HELP)
            line.task = Task::HELP;
        else if (found == VERSION)
            line.task = Task::VERSION;
        else if (found >= FIRST_SETTING)
            given.push_back({&SETTINGS[found - FIRST_SETTING], optarg});
        else
            throw std::invalid_argument(
                std::string(found == ':' ? "a value is missing behind " : "wrong option ") + argv[optind - 1]);
    }
    if (optind < argc)
        throw std::invalid_argument(std::string("what is \"") + argv[optind] + "\"?");
    if (line.task != Task::SERVE)
        return line;
    if (!config.empty())
        readFile(line.settings, config);
    for (const Given& each : given)
        set(line.settings, *each.row, each.text, "--");
    if (line.settings.format == Format::XML && line.settings.encoding != "UTF-8")
        throw std::invalid_argument("an XML log is in UTF-8");
    return line;
}

std::string usage()
{
    std::string text = "Usage: vxlogd [-c FILE.ini] [OPTION]...\n"
                       "Writes the lines that clients send over TCP to a log.\n"
                       "\n"
                       "  -c, --config=FILE.ini       settings by the names below, in the set [vxlogd];\n"
                       "                              the command line goes before them\n";
    for (const SettingRow& row : SETTINGS) {
        std::string option = std::string("      --") + row.name + "=" + row.value;
        option.resize(std::max<std::size_t>(option.size() + 1, 30), ' ');
        text += option + row.help + "\n";
    }
    text += "  -h, --help                  print this\n"
            "  -V, --version               print the version\n"
            "\n"
            "A client sends lines of UTF-8. Its first line may be \"VXLOG level=3 ack=1\": the level of\n"
            "its lines, and whether it wants to hear \"ack N\" once its first N lines are in the log.\n"
            "SIGTERM and SIGINT end the server when all it has received is in the log; SIGHUP opens\n"
            "the log anew and reads the settings again, all but listen, port and workers.\n"
            "The exit status is 0 for success, 1 for a failure, 2 for wrong settings.\n";
    return text;
}

} // namespace vxlogd
