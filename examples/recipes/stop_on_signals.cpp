// Stop a server on SIGTERM and SIGINT
//
// The signals are blocked before the first thread starts, so that all threads inherit that, and the main thread waits for one.
// No code runs in a signal handler. `stop` gives the handlers of the connections time to finish.
#include <vx/vxlib4.h>

#include <csignal>
#include <iostream>
#include <unistd.h>

using namespace vx;

int main()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    net::TcpServer::Settings settings {.hosts = {"127.0.0.1"}, .port = 0};
    settings.onFailure = [](const std::exception_ptr& failure, const String& peer) {
        std::cerr << peer << ": " << describe(failure) << '\n';
    };
    net::TcpServer server(settings, [](net::TcpSocket& client) {
        client.getOutputStream()->write("hello\n", 6);
        kill(getpid(), SIGTERM); // here the program takes the part of the service manager
    });
    const net::TcpSocket client(u"127.0.0.1", server.getPort());

    int received = 0;
    sigwait(&signals, &received);
    std::cout << "ending after signal " << (received == SIGTERM ? "SIGTERM" : "SIGINT") << '\n';
    std::cout << server.stop(5000) << " connections were cut\n"; // milliseconds
}
// Prints:
// ending after signal SIGTERM
// 0 connections were cut
