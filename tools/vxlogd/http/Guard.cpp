#include "Guard.h"

#include "common/Failure.h"
#include "common/Input.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace vxlogd::http {

namespace {

constexpr std::size_t FEWEST_CHARACTERS = 16;
constexpr std::size_t MOST_CHARACTERS = 512;

/// The first line of the file. Only its owner may read it.
std::string readToken(const std::string& path)
{
    const int file = vxtools::openFile(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file == -1)
        throw vxtools::Failure(path, vxtools::textOfError(errno));
    struct stat status { };
    char bytes[MOST_CHARACTERS + 2];
    const bool isFile = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    const ssize_t count = isFile ? ::read(file, bytes, sizeof bytes) : 0;
    ::close(file);
    if (!isFile)
        throw vxtools::Failure(path, "is no file");
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw vxtools::Failure(path, "others may read the token; its mode has to be 600");
    const std::string_view all(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    std::string token(all.substr(0, all.find_first_of("\r\n")));
    const auto isPlain = [](unsigned char byte) {
        return (byte < 0x80 && std::isalnum(byte) != 0)
            || std::string_view("-._~").find(static_cast<char>(byte)) != std::string_view::npos;
    };
    if (token.size() < FEWEST_CHARACTERS || token.size() > MOST_CHARACTERS || !std::ranges::all_of(token, isPlain))
        throw vxtools::Failure(path,
            "a token has " + std::to_string(FEWEST_CHARACTERS) + " to " + std::to_string(MOST_CHARACTERS)
                + " letters, digits and -._~");
    return token;
}

/// Takes the same time wherever the texts differ.
bool isEqual(std::string_view given, std::string_view token)
{
    unsigned int difference = given.size() == token.size() ? 0 : 1;
    for (std::size_t index = 0; index < token.size(); ++index)
        difference |= static_cast<unsigned char>(token[index])
            ^ (index < given.size() ? static_cast<unsigned char>(given[index]) : 0U);
    return difference == 0;
}

/// Without the port; lower case; an address of IPv6 without its brackets.
std::string hostIn(std::string text)
{
    if (text.starts_with('['))
        text = text.substr(1, text.find(']') - 1);
    else
        text.resize(std::min(text.find(':'), text.size()));
    std::ranges::transform(
        text, text.begin(), [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return text;
}

} // namespace

Guard::Guard(const std::string& tokenFile, std::vector<std::string> hosts)
    : m_token(tokenFile.empty() ? std::string() : readToken(tokenFile))
    , m_hosts(std::move(hosts))
{
    for (std::string& host : m_hosts)
        host = hostIn(host);
    m_hosts.emplace_back("localhost");
}

bool Guard::lets(const httplib::Request& request, const std::string& localHost, httplib::Response& response) const
{
    if (!isKnownHost(request, localHost)) {
        answer(response, 421, "this name is not one of the page; see --http-host");
        return false;
    }
    const std::string site = request.get_header_value("Sec-Fetch-Site");
    if (request.path != "/" && !site.empty() && site != "same-origin" && site != "none") {
        answer(response, 403, "a foreign page asks"); // it could use up the watchers
        return false;
    }
    if (m_token.empty() || hasToken(request))
        return true;
    if (request.has_param("token") && isEqual(request.get_param_value("token"), m_token)) {
        response.set_redirect("/", 303); // so that the token does not stay in the address
        response.set_header("Set-Cookie", m_cookie + "=" + m_token + "; Path=/; HttpOnly; SameSite=Strict");
        return false;
    }
    response.set_header("WWW-Authenticate", "Bearer");
    answer(response, 401, "the page needs its token: \"Authorization: Bearer TOKEN\", or once /?token=TOKEN");
    return false;
}

/// A name that an attacker has pointed at this machine is none of ours, so that a foreign page cannot read this one
/// through the browser of a user.
bool Guard::isKnownHost(const httplib::Request& request, const std::string& localHost) const
{
    if (request.get_header_value_count("Host") != 1)
        return false;
    const std::string host = hostIn(request.get_header_value("Host"));
    return host == localHost || std::ranges::find(m_hosts, host) != m_hosts.end();
}

bool Guard::hasToken(const httplib::Request& request) const
{
    constexpr std::string_view SCHEME = "Bearer ";
    const std::string given = request.get_header_value("Authorization");
    if (given.starts_with(SCHEME) && isEqual(std::string_view(given).substr(SCHEME.size()), m_token))
        return true;
    const std::string cookies = "; " + request.get_header_value("Cookie") + ";";
    const std::string start = "; " + m_cookie + "=";
    const std::size_t found = cookies.find(start);
    if (found == cookies.npos)
        return false;
    const std::size_t value = found + start.size();
    return isEqual(std::string_view(cookies).substr(value, cookies.find(';', value) - value), m_token);
}

void answer(httplib::Response& response, int status, const std::string& line)
{
    response.status = status;
    response.set_content(line + "\n", "text/plain; charset=utf-8");
}

} // namespace vxlogd::http
