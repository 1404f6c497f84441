// Resolve a link on a page
//
// `UriReference` accepts only what RFC 3986 allows.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const auto page = net::UriReference::parse("https://example.org/docs/guide/text.html?lang=de");
    for (const char* link : {"../index.html", "#top", "//other.example/x", "a b"}) {
        const auto reference = net::UriReference::parse(link);
        std::cout << (reference ? page->resolve(*reference)->getText() : "no reference") << '\n';
    }
}
// Prints:
// https://example.org/docs/index.html
// https://example.org/docs/guide/text.html?lang=de#top
// https://other.example/x
// no reference
