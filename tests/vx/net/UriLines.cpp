/// Prints what a base and a reference, which stand on one line with a tab between them, consist of and lead to, or nothing for
/// a line that is wrong. uri_reference_tests.py compares it with another implementation.

#include "vx/net/UriReference.h"

#include <iostream>
#include <string>

int main()
{
    using vx::net::UriReference;
    for (std::string line; std::getline(std::cin, line);) {
        const std::size_t tab = line.find('\t');
        const auto base = UriReference::parse(line.substr(0, tab));
        const auto reference = UriReference::parse(line.substr(tab + 1));
        if (base && reference) {
            const auto target = base->resolve(*reference);
            for (const auto& part :
                {reference->getScheme(), reference->getAuthority(), reference->getHost(), reference->getPortText(),
                    std::optional(reference->getPath()), reference->getQuery(), reference->getFragment()})
                std::cout << part.value_or("") << '\t';
            std::cout << (target ? target->getText() : "");
        }
        std::cout << '\n';
    }
}
