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

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
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

/// `first` are the settings at the start.
void changeSettings(Server& server, const Settings& first, int argc, char** argv, vxtools::Messages& messages)
{
    try {
        Settings settings = readSettings(argc, argv).settings;
        if (first.forward.empty()) // it stays so, and no brokers will have the lines
            settings.forwardAck = ForwardAck::LOG;
        if (!first.forward.empty() && (settings.log != first.log || settings.format != first.format))
            throw vxtools::UsageError(STAYS_FORWARDED());
        server.change(settings);
        complain("the log is opened anew");
    } catch (const vx::Exception& failure) {
        complain("the log cannot be opened anew: " + vx::explain(failure).toUtf8());
    } catch (const vxtools::UsageError& failure) {
        complain(messages.say(SETTINGS_STAY(failure.text())));
    } catch (const std::exception& failure) {
        complain(messages.say(SETTINGS_STAY(failure.what())));
    }
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
    const std::unique_ptr<StatusSocket> statusSocket = std::move(opened); // ends before what it asks
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
            changeSettings(server, settings, argc, argv, messages);
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

/// Returns the exit code.
int check(CommandLine line, vxtools::Messages& messages)
{
    constexpr int WRONG_SETTINGS = 2;
    try {
        openTls(line.settings);
    } catch (const vxtools::Failure& failure) {
        line.problems.push_back(failure.text());
    }
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
