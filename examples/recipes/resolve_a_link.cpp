// # Follow a link of a page
// References are resolved by RFC 3986.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const auto page = net::UriReference::parse("https://example.org/docs/guide/index.html?v=4");
    for (const char* link : {"start.html", "../api/", "/", "?v=5", "//mirror.example.org/"})
        std::cout << page->resolve(*net::UriReference::parse(link))->getText() << '\n';
}

/* prints
https://example.org/docs/guide/start.html
https://example.org/docs/api/
https://example.org/
https://example.org/docs/guide/index.html?v=5
https://mirror.example.org/
*/
