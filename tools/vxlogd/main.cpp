/// A log server: lines that clients send over TCP become entries of a log.

#include "Complaint.h"
#include "Forward.h"
#include "Server.h"
#include "ServiceManager.h"
#include "Settings.h"
#include "Status.h"
#include "StatusSocket.h"
#include "Texts.h"
#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Program.h"
#include "http/Page.h"

#include <vx/Describe.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace vxlogd;

/// SIGTERM and SIGINT end the program at once, with success: nothing has been received yet. SIGHUP waits.
void endAtOnceBySignals()
{
    struct sigaction action { };
    action.sa_handler = [](int) { ::_exit(0); };
    for (const int signal : {SIGTERM, SIGINT})
        ::sigaction(signal, &action, nullptr);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGHUP);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

/// The signals that `serve` waits for are blocked in all threads.
sigset_t holdSignals()
{
    struct sigaction action { };
    action.sa_handler = [](int) {}; // it only has to interrupt a wait
    ::sigaction(SIGUSR1, &action, nullptr);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGUSR1})
        sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    sigdelset(&signals, SIGUSR1);
    return signals;
}

/// Every connection needs a descriptor.
void allowManyDescriptors()
{
    rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

/// `first` are the settings at the start. Returns the new ones, if they are in effect.
std::optional<Settings> changeSettings(
    Server& server, const Settings& first, int argc, char** argv, vxtools::Messages& messages)
{
    try {
        Settings settings = readSettings(argc, argv).settings;
        if (first.forward.empty()) // it stays so, and no brokers will have the lines
            settings.forwardAck = ForwardAck::LOG;
        if (!first.forward.empty() && (settings.log != first.log || settings.format != first.format))
            throw vxtools::UsageError(STAYS_FORWARDED());
        server.change(settings);
        complain("the log is opened anew");
        for (const std::string& name : changesForRestart(first, settings))
            complain("the change of " + name + " needs a restart");
        return settings;
    } catch (const vx::Exception& failure) {
        complain("the log cannot be opened anew: " + vx::explain(failure).toUtf8());
    } catch (const vxtools::UsageError& failure) {
        complain(messages.say(SETTINGS_STAY(failure.text())));
    } catch (const std::exception& failure) {
        complain(messages.say(SETTINGS_STAY(failure.what())));
    }
    return std::nullopt;
}

/// Null if there is none, or if it cannot be opened and the user has not chosen its path: then `why` is the reason.
/// There is none beside a device.
std::unique_ptr<StatusSocket> openStatus(const Settings& settings, std::string& why)
{
    const std::string path = statusPath(settings);
    const bool isChosen = !settings.statusSocket.empty();
    std::error_code error;
    const bool isFile
        = std::filesystem::is_regular_file(settings.log, error) || !std::filesystem::exists(settings.log, error);
    if (path.empty() || (!isChosen && !isFile))
        return nullptr;
    try {
        return std::make_unique<StatusSocket>(path);
    } catch (const vxtools::Failure& failure) {
        if (isChosen)
            throw;
        why = failure.what();
        return nullptr;
    }
}

/// The settings have changed: another place, or none, may be the right one. If it cannot be used, the old one stays.
void moveStatus(std::unique_ptr<StatusSocket>& socket, const Settings& settings, Status& status, Tail& tail)
{
    if (socket != nullptr && socket->isAt(statusPath(settings)))
        return;
    std::string why;
    try {
        std::unique_ptr<StatusSocket> other = openStatus(settings, why);
        if (other != nullptr)
            other->start(status, tail);
        if (why.empty())
            socket = std::move(other);
    } catch (const vx::Exception& failure) {
        why = vx::explain(failure).toUtf8();
    } catch (const std::exception& failure) {
        why = failure.what();
    }
    if (!why.empty())
        complain("the socket for --status does not move: " + why);
}

void serve(const Settings& settings, int argc, char** argv, vxtools::Messages& messages)
{
    endAtOnceBySignals();
    allowManyDescriptors();
    std::unique_ptr<vx::net::TcpServerSocket2> socket = listenAt(settings);
    const sigset_t signals = holdSignals();
    std::string whyNot;
    std::unique_ptr<StatusSocket> opened = openStatus(settings, whyNot);
    Server server(settings, std::move(socket));
    if (!whyNot.empty()) // a log that cannot be opened is worse, and is told alone
        complain("--status cannot ask this server: " + whyNot);
    const std::unique_ptr<Forwarder> forwarder = settings.forward.empty()
        ? nullptr
        : std::make_unique<Forwarder>(settings, server.getClients(), server.getUndelivered());
    Status status([&] {
        Counts counts = server.getCounts();
        if (forwarder != nullptr)
            counts.forward = forwarder->getCounts();
        return counts;
    });
    std::unique_ptr<StatusSocket> statusSocket = std::move(opened); // ends before what it asks
    if (forwarder != nullptr)
        forwarder->start();
    const auto page
        = settings.http.empty() ? nullptr : std::make_unique<http::Page>(settings, status, server.getTail());
    server.start();
    if (statusSocket != nullptr)
        statusSocket->start(status, server.getTail());
    if (page != nullptr)
        page->start();
    std::printf("listening on %s\n", server.getAddresses().c_str());
    if (page != nullptr)
        std::printf("the page is at %s\n", page->getAddress().c_str());
    std::fflush(stdout);
    tellManager("READY=1");
    for (int signal = 0; signal != SIGTERM && signal != SIGINT;) {
        if (::sigwait(&signals, &signal) == 0 && signal == SIGHUP) {
            tellManagerOfReload();
            if (const std::optional<Settings> changed = changeSettings(server, settings, argc, argv, messages))
                moveStatus(statusSocket, *changed, status, server.getTail());
            tellManager("READY=1");
        }
    }
    tellManager("STOPPING=1");
    const std::uint64_t lost = server.stop();
    if (forwarder != nullptr)
        forwarder->stop();
    if (lost > 0)
        throw vxtools::Failure(settings.log, std::to_string(lost) + " received lines are not in the log");
}

/// What is wrong with the place of the log; nothing if it may be right. A folder that only another user may see is right.
std::optional<vxtools::Text> problemOf(const std::string& log)
{
    using std::filesystem::file_type;
    std::error_code error;
    const std::filesystem::path path(log);
    const file_type folder = std::filesystem::status(path.has_parent_path() ? path.parent_path() : ".", error).type();
    if (folder == file_type::not_found || (folder != file_type::none && folder != file_type::directory))
        return NO_FOLDER(path.parent_path().native());
    if (std::filesystem::is_directory(path, error))
        return vxtools::textOfError(EISDIR);
    return std::nullopt;
}

/// Calls `work`, and adds its failure to the problems.
template <class Work>
void attempt(CommandLine& line, Work&& work)
{
    try {
        work();
    } catch (const vxtools::Failure& failure) {
        line.problems.push_back(failure.text());
    }
}

/// Returns the exit code.
int check(CommandLine line, vxtools::Messages& messages)
{
    constexpr int WRONG_SETTINGS = 2;
    if (const std::optional<vxtools::Text> why = problemOf(line.settings.log)) {
        const auto place = line.places.find("log");
        line.problems.push_back(vxtools::Failure(place != line.places.end() ? place->second : "log", *why).text());
    }
    attempt(line, [&] { openTls(line.settings); });
    attempt(line, [&] { http::checkPage(line.settings); });
    for (const vxtools::Text& problem : line.problems)
        complain(messages.say(problem));
    if (!line.problems.empty())
        return WRONG_SETTINGS;
    vxtools::print(textOf(line.settings));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    vxtools::Messages messages("vxlogd", vxtools::localeOf(optionTable(), argc, argv));
    int result = 0;
    const auto run = [&] {
        const CommandLine line = readSettings(argc, argv);
        if (vxtools::tellAboutProgram("vxlogd", optionTable(), line, [&] { return usage(messages); }))
            return;
        if (line.task == Task::CHECK_CONFIG)
            result = check(line, messages);
        else if (line.task == Task::SERVE)
            serve(line.settings, argc, argv, messages);
        else
            vxtools::print(askStatus(statusPath(line.settings), line.task == Task::STATUS ? "status" : "metrics"));
    };
    const int failure = vxtools::runProgram("vxlogd", run, messages);
    return failure != 0 ? failure : result;
}
