#include "Settings.h"

#include "Texts.h"
#include "common/CommandLine.h"
#include "common/Component.h"
#include "common/Failure.h"
#include "common/FileName.h"
#include "common/Input.h"
#include "common/Kafka.h"
#include "http/Place.h"

#include <vx/Reference.h>
#include <vx/TerminatedText.h>
#include <vx/text/charset/CharToByteConverter.h>
#include <vx/util/IniDocument.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

namespace vxlogd {

using vx::util::OptionRow;
using vx::util::OptionTable;
using vxtools::Text;
using vxtools::unknownEncoding;
using vxtools::UsageError;

namespace {

constexpr std::string_view SET = "vxlogd";
constexpr const char* CHECK_CONFIG = "check-config";
constexpr const char* STATUS = "status";
constexpr const char* METRICS = "metrics";
constexpr std::string_view NOWHERE = "none"; // for the status socket

/// Letter case does not count.
bool isSameName(std::string_view left, std::string_view right)
{
    const auto lower = [](unsigned char byte) { return std::tolower(byte); };
    return std::ranges::equal(left, right, {}, lower, lower);
}

template <class Number>
Number numberIn(const std::string& text, Number least, Number most)
{
    Number number {};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most)
        throw UsageError(NO_NUMBER(text, least, most));
    return number;
}

std::string nonEmpty(const std::string& text)
{
    if (text.empty())
        throw UsageError(EMPTY());
    return text;
}

std::string octal(std::int32_t number)
{
    char digits[12];
    return {digits, std::to_chars(digits, std::end(digits), number, 8).ptr};
}

using vx::text::charset::CharToByteConverter;

vx::Reference<CharToByteConverter> encoderOf(const std::string& name)
{
    return CharToByteConverter::getConverter(vx::TerminatedText(vx::String(std::string_view(name))));
}

/// An encoder of the log, and not only a decoder, has to exist.
std::string knownEncoding(const std::string& name)
{
    try {
        encoderOf(name);
    } catch (const vx::Exception&) {
        throw UsageError(unknownEncoding(name));
    }
    return name;
}

struct SettingRow {
    vx::util::OptionRow option;
    void (*set)(Settings& settings, const std::string& text);
    std::string (*get)(const Settings& settings);
    bool needsRestart = false;
};

constexpr std::size_t MOST_LINE = 1024 * 1024;
constexpr std::size_t MOST_CONNECTIONS = 100'000;
constexpr std::int64_t MOST_BYTES = std::int64_t {1} << 50;
constexpr std::size_t MOST_BACKLOG = std::size_t {1} << 40;
constexpr unsigned int MOST_SECONDS = 7 * 24 * 3600;

constexpr SettingRow SETTINGS[] = {
    {{.name = "listen",
         .value = "HOSTS",
         .standard = "localhost",
         .help = "where to listen, with commas; * is everywhere"},
        [](Settings& settings, const std::string& text) { settings.listen = nonEmpty(text); },
        [](const Settings& settings) { return settings.listen; }, true},
    {{.name = "port", .value = "PORT", .standard = "7514", .help = "0 lets the system choose one"},
        [](Settings& settings, const std::string& text) { settings.port = numberIn<unsigned short>(text, 0, 65535); },
        [](const Settings& settings) { return std::to_string(settings.port); }, true},
    {{.name = "log",
         .value = "FILE",
         .standard = "vxlogd.log",
         .help = "the log, to which is appended",
         .takes = OptionRow::Takes::FILES},
        [](Settings& settings, const std::string& text) { settings.log = nonEmpty(text); },
        [](const Settings& settings) { return settings.log; }},
    {{.name = "format",
         .value = "plain|json|xml",
         .standard = "plain",
         .help = "json has an object on each line; an old document of xml is moved aside for a new one"},
        [](Settings& settings, const std::string& text) {
            if (text != "plain" && text != "xml" && text != "json")
                throw UsageError(NO_CHOICE(text, "plain, json, xml"));
            settings.format = text == "xml" ? Format::XML : text == "json" ? Format::JSON : Format::PLAIN;
        },
        [](const Settings& settings) {
            return std::string(settings.format == Format::XML ? "xml"
                    : settings.format == Format::JSON         ? "json"
                                                              : "plain");
        }},
    {{.name = "rotate-size",
         .value = "BYTES",
         .standard = "0",
         .help
         = "begin a new log before it gets larger; 0 is never. The older ones are LOG.000001, LOG.000002 and so on"},
        [](Settings& settings, const std::string& text) {
            settings.rotation.mostBytes = numberIn<std::int64_t>(text, 0, MOST_BYTES);
        },
        [](const Settings& settings) { return std::to_string(settings.rotation.mostBytes); }},
    {{.name = "rotate-every",
         .value = "never|hour|day",
         .standard = "never",
         .help = "begin a new log with each hour or day of local time"},
        [](Settings& settings, const std::string& text) {
            using Every = vx::io::Rotation::Every;
            if (text != "never" && text != "hour" && text != "day")
                throw UsageError(NO_CHOICE(text, "never, hour, day"));
            settings.rotation.every = text == "hour" ? Every::HOUR : text == "day" ? Every::DAY : Every::NEVER;
        },
        [](const Settings& settings) {
            return std::string(settings.rotation.every == vx::io::Rotation::Every::HOUR ? "hour"
                    : settings.rotation.every == vx::io::Rotation::Every::DAY           ? "day"
                                                                                        : "never");
        }},
    {{.name = "keep", .value = "COUNT", .standard = "0", .help = "how many of the older logs are kept; 0 is all"},
        [](Settings& settings, const std::string& text) { settings.rotation.keepFiles = numberIn(text, 0, 1'000'000); },
        [](const Settings& settings) { return std::to_string(settings.rotation.keepFiles); }},
    {{.name = "mode", .value = "OCTAL", .help = "the mode of a new log, such as 640 (700 less the umask)"},
        [](Settings& settings, const std::string& text) {
            const std::optional<unsigned int> mode = vxtools::modeOf(text);
            if (!mode && !text.empty())
                throw UsageError(NO_MODE(text));
            settings.rotation.access = static_cast<std::int32_t>(mode.value_or(0));
        },
        [](const Settings& settings) {
            return settings.rotation.access == 0 ? std::string() : octal(settings.rotation.access);
        }},
    {{.name = "encoding", .value = "NAME", .standard = "UTF-8", .help = "the encoding of a plain log"},
        [](Settings& settings, const std::string& text) { settings.encoding = knownEncoding(text); },
        [](const Settings& settings) { return settings.encoding; }},
    {{.name = "workers",
         .value = "COUNT",
         .standard = "1",
         .help = "threads that write the log; with one it keeps the order"},
        [](Settings& settings, const std::string& text) { settings.workers = numberIn(text, 1, 64); },
        [](const Settings& settings) { return std::to_string(settings.workers); }, true},
    {{.name = "level", .value = "LEVEL", .standard = "0", .help = "the level of lines whose client names none"},
        [](Settings& settings, const std::string& text) { settings.level = numberIn(text, -1'000'000, 1'000'000); },
        [](const Settings& settings) { return std::to_string(settings.level); }},
    {{.name = "max-line", .value = "BYTES", .standard = "8192", .help = "longer lines are cut"},
        [](Settings& settings, const std::string& text) {
            settings.maxLine = numberIn<std::size_t>(text, 16, MOST_LINE);
        },
        [](const Settings& settings) { return std::to_string(settings.maxLine); }},
    {{.name = "idle-timeout",
         .value = "SECONDS",
         .standard = "300",
         .help = "of silence, after which a client is dropped; 0 is never"},
        [](Settings& settings, const std::string& text) {
            settings.idleSeconds = numberIn<unsigned int>(text, 0, MOST_SECONDS);
        },
        [](const Settings& settings) { return std::to_string(settings.idleSeconds); }},
    {{.name = "max-connections", .value = "COUNT", .standard = "1024", .help = "more are closed at once"},
        [](Settings& settings, const std::string& text) {
            settings.maxConnections = numberIn<std::size_t>(text, 1, MOST_CONNECTIONS);
        },
        [](const Settings& settings) { return std::to_string(settings.maxConnections); }},
    {{.name = "backlog",
         .value = "BYTES",
         .standard = "33554432",
         .help = "memory of the lines that wait for the log; while they need more, no client is read"},
        [](Settings& settings, const std::string& text) {
            settings.backlog = numberIn<std::size_t>(text, 1, MOST_BACKLOG);
        },
        [](const Settings& settings) { return std::to_string(settings.backlog); }},
    {{.name = "tls-cert",
         .value = "FILE",
         .help = "encrypt all connections by TLS, with the certificate in FILE",
         .takes = OptionRow::Takes::FILES},
        [](Settings& settings, const std::string& text) { settings.tls.certificate = text; },
        [](const Settings& settings) { return settings.tls.certificate; }},
    {{.name = "tls-key",
         .value = "FILE",
         .help = "the private key for tls-cert, if it is not in the same file",
         .takes = OptionRow::Takes::FILES},
        [](Settings& settings, const std::string& text) { settings.tls.key = text; },
        [](const Settings& settings) { return settings.tls.key; }},
    {{.name = "tls-client-ca",
         .value = "FILE",
         .help = "accept only clients with a certificate of the authorities in FILE",
         .takes = OptionRow::Takes::FILES},
        [](Settings& settings, const std::string& text) { settings.tls.authorities = text; },
        [](const Settings& settings) { return settings.tls.authorities; }},
    {{.name = "sync",
         .value = "no|yes",
         .standard = "no",
         .help = "flush each entry to disk before it is acknowledged"},
        [](Settings& settings, const std::string& text) {
            if (text != "no" && text != "yes")
                throw UsageError(NO_CHOICE(text, "no, yes"));
            settings.sync = text == "yes";
        },
        [](const Settings& settings) { return std::string(settings.sync ? "yes" : "no"); }},
    {{.name = "forward",
         .value = "URI",
         .help = "send the lines of the log also to kafka://HOST:PORT,HOST:PORT/TOPIC; it needs format json"},
        [](Settings& settings, const std::string& text) {
            if (!text.empty())
                static_cast<void>(vxtools::KafkaAddress(text));
            settings.forward = text;
        },
        [](const Settings& settings) { return settings.forward; }, true},
    {{.name = "forward-ack",
         .value = "log|brokers",
         .standard = "log",
         .help = "whether a line is acknowledged when it is in the log, or when all replicas of its topic have it"},
        [](Settings& settings, const std::string& text) {
            if (text != "log" && text != "brokers")
                throw UsageError(NO_CHOICE(text, "log, brokers"));
            settings.forwardAck = text == "brokers" ? ForwardAck::BROKERS : ForwardAck::LOG;
        },
        [](const Settings& settings) {
            return std::string(settings.forwardAck == ForwardAck::BROKERS ? "brokers" : "log");
        }},
    {{.name = "status-socket",
         .value = "PATH",
         .standard = ".LOG.status",
         .help = "where --status and --metrics ask, beside the log; only for the user of the server; none is nowhere",
         .takes = OptionRow::Takes::FILES},
        [](Settings& settings, const std::string& text) { settings.statusSocket = nonEmpty(text); },
        [](const Settings& settings) {
            return settings.statusSocket == NOWHERE ? settings.statusSocket : statusPath(settings);
        }},
    {{.name = "http",
         .value = "HOST:PORT",
         .help = "show the log and the state of the server on a page, such as 127.0.0.1:7580; needs http-token where "
                 "other machines reach it"},
        [](Settings& settings, const std::string& text) {
            if (!text.empty() && !http::placeIn(text))
                throw UsageError(NO_PLACE(text));
            settings.http = text;
        },
        [](const Settings& settings) { return settings.http; }, true},
    {{.name = "http-token",
         .value = "FILE",
         .help = "show the page only to those who know the token in FILE, which only its owner may read",
         .takes = OptionRow::Takes::FILES},
        [](Settings& settings, const std::string& text) { settings.httpToken = text; },
        [](const Settings& settings) { return settings.httpToken; }, true},
    {{.name = "http-host", .value = "NAMES", .help = "names of this machine by which the page is opened, with commas"},
        [](Settings& settings, const std::string& text) { settings.httpHost = text; },
        [](const Settings& settings) { return settings.httpHost; }, true},
};

using Problems = std::vector<Text>;

Text because(const Text& what, const Text& why)
{
    return vxtools::Failure(what, why).text();
}

/// What is wrong with the text; nothing if it is right.
std::optional<Text> set(Settings& settings, const SettingRow& row, const std::string& text)
{
    try {
        row.set(settings, text);
        return std::nullopt;
    } catch (const UsageError& failure) {
        return failure.text();
    }
}

/// Calls `take` with each line that begins a set of another name.
template <class Take>
void forEachForeignSet(const vx::util::IniDocument& file, Take take)
{
    std::istringstream lines(file.getText());
    std::string text;
    for (std::size_t line = 1; std::getline(lines, text); ++line) {
        for (const std::string& name : vx::util::IniDocument::parse(text).getSets()) {
            if (!name.empty() && !isSameName(name, SET))
                take(line, name);
        }
    }
}

/// Calls `refuse` with each line that is wrong, and why.
template <class Refuse>
void readLines(
    Settings& settings, const vx::util::IniDocument& file, std::map<std::string, std::size_t>& lines, Refuse refuse)
{
    for (const vx::util::IniDocument::StrangeLine& line : file.getStrangeLines())
        refuse(line.line, STRANGE_LINE(line.text));
    forEachForeignSet(file, [&](std::size_t line, const std::string& name) { refuse(line, UNKNOWN_SET(name)); });
    for (const vx::util::IniDocument::Entry& entry : file.getEntries()) {
        if (entry.set.empty())
            refuse(entry.line, BEFORE_FIRST_SET(entry.name));
        if (!isSameName(entry.set, SET))
            continue;
        const auto row = std::ranges::find_if(
            SETTINGS, [&](const SettingRow& each) { return isSameName(each.option.name, entry.name); });
        if (row == std::end(SETTINGS))
            refuse(entry.line, UNKNOWN_SETTING(entry.name));
        else if (const auto [before, isNew] = lines.try_emplace(row->option.name, entry.line); !isNew)
            refuse(entry.line, SET_TWICE(row->option.name, before->second));
        else if (const std::optional<Text> why = set(settings, *row, entry.value))
            refuse(entry.line, because(row->option.name, *why));
    }
}

void readFile(CommandLine& line, const std::string& path)
{
    const auto placeOf = [&path](std::size_t number) { return path + ':' + std::to_string(number); };
    try {
        const vxtools::Input readable(path); // throws the reason if it is not
        const auto file = vx::util::IniDocument::load(vxtools::canonicalPath(path));
        std::multimap<std::size_t, Text> wrong; // by line
        std::map<std::string, std::size_t> lines;
        readLines(line.settings, file, lines, [&](std::size_t number, const Text& why) { wrong.emplace(number, why); });
        for (const auto& [number, why] : wrong)
            line.problems.push_back(because(placeOf(number), why));
        for (const auto& [name, number] : lines)
            line.places[name] = placeOf(number) + ": " + name;
        if (wrong.empty() && !file.hasSet(SET))
            line.problems.push_back(because(path, NO_SET()));
    } catch (const vxtools::Failure& failure) {
        line.problems.push_back(failure.text());
    } catch (const vx::Exception& failure) {
        line.problems.push_back(because(path, vxtools::textOf(failure)));
    }
}

/// Settings that are right alone and wrong together.
void compare(const Settings& settings, Problems& problems)
{
    if (settings.format != Format::PLAIN && !isUtf8(settings))
        problems.push_back(ALWAYS_UTF_8(settings.format == Format::XML ? "xml" : "json"));
    if (settings.format == Format::XML && rotates(settings))
        problems.push_back(NOT_ROTATED());
    if (!settings.forward.empty() && settings.format != Format::JSON)
        problems.push_back(FORWARD_NEEDS_JSON());
    if (settings.forward.empty() && settings.forwardAck == ForwardAck::BROKERS)
        problems.push_back(NEEDS_FORWARD());
    const vxtools::TlsFiles& tls = settings.tls;
    if (tls.certificate.empty() && !(tls.key.empty() && tls.authorities.empty()))
        problems.push_back(NEED_CERTIFICATE());
    if (settings.http.empty() && !(settings.httpToken.empty() && settings.httpHost.empty()))
        problems.push_back(NEED_HTTP());
    if (!settings.http.empty() && settings.httpToken.empty() && !http::isLoopback(http::placeIn(settings.http).value()))
        problems.push_back(NEEDS_TOKEN(settings.http));
}

} // namespace

const OptionTable& optionTable()
{
    static const OptionTable table = vxtools::makeOptionTable("vxlogd", [] {
        std::vector<OptionRow> rows {{.name = "config",
            .letter = 'c',
            .value = "FILE.ini",
            .help = "settings by the names below, in the set [vxlogd]; the command line goes before them",
            .takes = OptionRow::Takes::FILES}};
        rows.push_back(
            {.name = CHECK_CONFIG, .help = "print what is wrong with the settings, or else all settings, and exit"});
        rows.push_back({.name = STATUS, .help = "print the state of the running server and exit"});
        rows.push_back({.name = METRICS, .help = "the same in the text format of Prometheus"});
        for (const SettingRow& row : SETTINGS)
            rows.push_back(row.option);
        return rows;
    }());
    return table;
}

bool isUtf8(const Settings& settings)
{
    return encoderOf(settings.encoding)->getEncodingName() == std::u16string_view(u"UTF-8");
}

/// The name beside the log begins with a dot, so that "LOG*" finds only logs.
std::string statusPath(const Settings& settings)
{
    const std::string& path = settings.statusSocket;
    if (!path.empty())
        return path == NOWHERE ? std::string() : path;
    const std::size_t name = settings.log.rfind('/') + 1; // 0 without a folder
    return settings.log.substr(0, name) + "." + settings.log.substr(name) + ".status";
}

CommandLine readSettings(int argc, char** argv)
{
    const vx::util::ParsedOptions given = vxtools::parseCommandLine(optionTable(), argc, argv);
    CommandLine line;
    line.task = given.has("help") ? Task::HELP
        : given.has("version")    ? Task::VERSION
        : given.has("completion") ? Task::COMPLETION
        : given.has(CHECK_CONFIG) ? Task::CHECK_CONFIG
        : given.has(STATUS)       ? Task::STATUS
        : given.has(METRICS)      ? Task::METRICS
                                  : Task::SERVE;
    line.shell = given.find("completion").value_or("");
    const bool asks = line.task == Task::STATUS || line.task == Task::METRICS;
    if (given.getArguments().size() > (asks ? 1 : 0))
        throw UsageError(UNEXPECTED(given.getArguments().back()));
    if (line.task != Task::SERVE && line.task != Task::CHECK_CONFIG && !asks)
        return line;
    if (const std::string config = given.find("config").value_or(""); !config.empty())
        readFile(line, config);
    for (const SettingRow& row : SETTINGS) {
        const std::string option = std::string("--") + row.option.name;
        for (const std::string& text : given.getAll(row.option.name)) {
            line.places[row.option.name] = option;
            if (const std::optional<Text> why = set(line.settings, row, text))
                line.problems.push_back(because(option, *why));
        }
    }
    if (!given.getArguments().empty())
        line.settings.statusSocket = given.getArguments().front();
    compare(line.settings, line.problems);
    if (line.task != Task::CHECK_CONFIG && !line.problems.empty())
        throw UsageError(line.problems.front());
    return line;
}

std::vector<std::string> changesForRestart(const Settings& before, const Settings& now)
{
    std::vector<std::string> names;
    for (const SettingRow& row : SETTINGS) {
        if (row.needsRestart && row.get(before) != row.get(now))
            names.emplace_back(row.option.name);
    }
    return names;
}

std::string textOf(const Settings& settings)
{
    std::string text("[");
    text.append(SET).append("]\n");
    for (const SettingRow& row : SETTINGS)
        text.append(row.option.name).append(" = ").append(row.get(settings)).append("\n");
    return text;
}

std::string usage(vxtools::Messages& messages)
{
    constexpr vxtools::Message HEAD {u"vxlogd.help",
        "Usage: vxlogd [-c FILE.ini] [OPTION]...\n"
        "  or:  vxlogd --check-config [-c FILE.ini] [OPTION]...\n"
        "  or:  vxlogd --status|--metrics [PATH]\n"
        "Writes the lines that clients send over TCP to a log."};
    constexpr vxtools::Message FOOT {u"vxlogd.help.more",
        "A client sends lines of UTF-8. Its first line may be \"VXLOG level=3 ack=1\": the\n"
        "level of its lines, and whether it wants to hear \"ack N\" once its first N lines\n"
        "are in the log, and \"wait REASON\" if the log cannot be written, for example\n"
        "because the disk is full. The server tries again until it can. With\n"
        "forward-ack=brokers it hears \"ack N\" once the brokers have them, and also why\n"
        "they do not.\n"
        "SIGTERM and SIGINT end the server when all it has received is in the log;\n"
        "SIGHUP opens the log anew and reads the settings again, all but listen, port,\n"
        "workers, forward and those of http, which need a restart.\n"
        "The exit status is 0 for success, 1 for a failure or lost lines, 2 for wrong\n"
        "settings."};
    return messages.say(HEAD()) + "\n\n" + vxtools::helpOf(optionTable(), u"vxlogd.help.", messages) + '\n'
        + messages.say(FOOT()) + '\n';
}

} // namespace vxlogd
