#include "Program.h"

#include "Failure.h"
#include "Input.h"

#include <vx/Describe.h>
#include <vx/Version.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string_view>

namespace vxtools {

namespace {

enum ExitCode { SUCCESS = 0, FAILURE = 1, USAGE_ERROR = 2 };

/// The text with the numbers of its control characters. It may have the name of a file, or what another machine says,
/// which must not control the terminal.
std::string visible(std::string_view text)
{
    constexpr unsigned char LEAD = 0xC2; // of U+0080 to U+009F in UTF-8
    std::string shown;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const unsigned char next = index + 1 < text.size() ? static_cast<unsigned char>(text[index + 1]) : '\0';
        const bool isPair = byte == LEAD && next >= 0x80 && next < 0xA0;
        if (byte >= ' ' && byte != 0x7F && !isPair) {
            shown += text[index];
            continue;
        }
        char number[8];
        std::snprintf(number, sizeof number, isPair ? "\\u%04x" : "\\x%02x", isPair ? next : byte);
        shown += number;
        index += isPair ? 1 : 0;
    }
    return shown;
}

} // namespace

void complain(const char* name, const std::string& text)
{
    std::cout.flush();
    std::fprintf(stderr, "%s: %s\n", name, visible(text).c_str());
}

void print(const std::string& text)
{
    requireStream(1);
    if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) == EOF)
        throw Failure(STANDARD_OUTPUT(), textOfError(errno));
}

void printVersion(const char* name)
{
    print(std::string(name) + " " + VXLIBGetVersionText() + "\n");
}

int runProgram(const char* name, const std::function<void()>& work, Messages& messages)
{
    occupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const auto refuse = [&](const Text& text) {
        complain(name, messages.say(SEE_HELP(text, name)));
        return USAGE_ERROR;
    };
    try {
        work();
        return SUCCESS;
    } catch (const UsageError& failure) {
        return refuse(failure.text());
    } catch (const std::invalid_argument& failure) {
        return refuse(failure.what());
    } catch (const Failure& failure) {
        complain(name, messages.say(failure.text()));
    } catch (const vx::Exception& failure) {
        complain(name, vx::explain(failure).toUtf8());
    } catch (const std::bad_alloc&) {
        complain(name, "out of memory");
    } catch (const std::exception& failure) {
        complain(name, failure.what());
    }
    return FAILURE;
}

int runProgram(const char* name, const std::function<void()>& work)
{
    Messages english;
    return runProgram(name, work, english);
}

} // namespace vxtools
