#pragma once

#include "../Settings.h"
#include "../Status.h"
#include "../Tail.h"

#include <memory>
#include <string>

namespace vxlogd::http {

/// A page about the running server for a browser, and the same for programs: /, /tail, /metrics, /health, /api/status.
/// Everything that it shows comes from clients and is taken for hostile.
class Page {
public:
    /// Listens where the settings say, but does not answer yet. Reads the token from its file. `status` and `tail` must
    /// outlive this object. Throws vxtools::Failure, also in a program that was built without the page.
    Page(const Settings& settings, Status& status, Tail& tail);
    /// Ends all connections.
    ~Page();
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// "http://127.0.0.1:8080/".
    std::string getAddress() const;
    /// Answers in threads that it starts.
    void start();

private:
    class Site;

    const std::unique_ptr<Site> m_site;
};

/// Throws vxtools::Failure if the settings ask for a page whose token cannot be read, or for one that this program lacks.
void checkPage(const Settings& settings);

} // namespace vxlogd::http
