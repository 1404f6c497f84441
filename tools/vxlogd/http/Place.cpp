#include "Place.h"

#include <arpa/inet.h>
#include <charconv>

namespace vxlogd::http {

std::optional<Place> placeIn(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    if (colon == text.npos || colon == 0)
        return std::nullopt;
    Place place {text.substr(0, colon), 0};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, place.port);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    if (place.host.front() == '[' && place.host.back() == ']')
        place.host = place.host.substr(1, place.host.size() - 2);
    else if (place.host.find(':') != place.host.npos)
        return std::nullopt; // an address of IPv6 stands in brackets
    return place.host.empty() ? std::nullopt : std::optional(place);
}

bool isLoopback(const Place& place)
{
    constexpr std::uint32_t NETWORK = 0x7F, SHIFT = 24;
    in_addr four {};
    in6_addr six {};
    if (::inet_pton(AF_INET, place.host.c_str(), &four) == 1)
        return ntohl(four.s_addr) >> SHIFT == NETWORK;
    return place.host == "localhost"
        || (::inet_pton(AF_INET6, place.host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six));
}

} // namespace vxlogd::http
