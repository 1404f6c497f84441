#pragma once

#include <httplib.h>
#include <string>
#include <vector>

namespace vxlogd::http {

/// Decides who may see the page.
class Guard {
public:
    /// `tokenFile` is empty for no token; then all who reach the page may see it. `hosts` are names by which the page
    /// is known, besides localhost and addresses. Throws vxtools::Failure that names the file.
    Guard(const std::string& tokenFile, std::vector<std::string> hosts);

    /// The port is part of the name of the cookie, because the servers of one host share their cookies.
    void setPort(int port) { m_cookie = "vxlogd_" + std::to_string(port); }
    /// Whether to go on; otherwise `response` says why not. `localHost` is the address that the client has reached.
    bool lets(const httplib::Request& request, const std::string& localHost, httplib::Response& response) const;

private:
    bool isKnownHost(const httplib::Request& request, const std::string& localHost) const;
    bool hasToken(const httplib::Request& request) const;

    std::string m_token;
    std::vector<std::string> m_hosts;
    std::string m_cookie;
};

/// Answers with a status and one line of text.
void answer(httplib::Response& response, int status, const std::string& line);

} // namespace vxlogd::http
