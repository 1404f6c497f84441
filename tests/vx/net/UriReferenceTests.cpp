#include "vx/net/UriReference.h"

#include "tests/Random.h"
#include "tests/vx/Common.h"

#include <arpa/inet.h>

namespace vx::net {
namespace {

/// All that is there, as "part=text".
std::string partsOf(const UriReference& uri)
{
    std::string text;
    const auto add = [&](const char* name, std::optional<std::string_view> part) {
        if (part)
            text.append(text.empty() ? "" : " ").append(name).append("=").append(*part);
    };
    add("scheme", uri.getScheme());
    add("user", uri.getUserInfo());
    add("host", uri.getHost());
    add("port", uri.getPortText());
    add("path", uri.getPath());
    add("query", uri.getQuery());
    add("fragment", uri.getFragment());
    return text;
}

TEST(UriReference, TakesAReferenceApartAndPutsItTogether)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "path="}, {"a:", "scheme=a path="}, {"A1+-.:?#", "scheme=A1+-. path= query= fragment="},
        {"a:b:c", "scheme=a path=b:c"}, {"a/b:c", "path=a/b:c"}, {"//", "host= path="},
        {"//@:", "user= host= port= path="}, {"//u:p:@h:1/", "user=u:p: host=h port=1 path=/"},
        {"s://[::1]:80?/?:@#/?", "scheme=s host=[::1] port=80 path= query=/?:@ fragment=/?"},
        {"s://u@[vF.a:b]", "scheme=s user=u host=[vF.a:b] path="}, {"file:///%c3%A9", "scheme=file host= path=/%c3%A9"},
        {"?a#b", "path= query=a fragment=b"}, {"urn:isbn:0-395-36341-1", "scheme=urn path=isbn:0-395-36341-1"},
        {"//999.1.1.1", "host=999.1.1.1 path="}, // a name
    };
    for (const auto& [text, parts] : cases) {
        const auto uri = UriReference::parse(text);
        ASSERT_TRUE(uri) << text;
        EXPECT_EQ(partsOf(*uri), parts);
        EXPECT_EQ(UriReference::compose(uri->getComponents()), uri);
        const UriReference copy = *UriReference::parse(String(text));
        EXPECT_EQ(partsOf(copy), parts);
    }
    for (const char* wrong :
        {" ", "a b", "1:", ":", "a%", "a%4", "a%4g", "//h:x", "//h:1:2", "//a@b@c", "//[::1", "//::1", "//[::1]x",
            "//[1::2::3]", "//[::1%25lo]", "//[v.x]", "//[v1.]", "a#b#c", "a[b", "\xC3\xA9", "a\nb", "a\"b", "{"})
        EXPECT_FALSE(UriReference::parse(wrong)) << wrong;
    EXPECT_FALSE(UriReference::parse(u"é"));
    for (const UriReference::Components& wrong :
        {UriReference::Components {.path = "//x"}, {.path = "a:b"}, {.host = "h", .path = "x"}, {.userInfo = "u"},
            {.port = "1"}, {.path = "a?b"}, {.host = "h", .port = "1/2"}})
        EXPECT_FALSE(UriReference::compose(wrong));
}

TEST(UriReference, IsEmptyAfterAMove)
{
    const auto first = UriReference::parse("http://user@a.host.with.a.long.name:80/path?query#fragment");
    UriReference source = *first;
    UriReference target = std::move(source);
    EXPECT_EQ(partsOf(source), "path=");
    EXPECT_EQ(source.normalized(), UriReference());
    EXPECT_EQ(partsOf(target), partsOf(*first));
    source = std::move(target);
    EXPECT_EQ(partsOf(target) + ' ' + partsOf(source), "path= " + partsOf(*first));
    static_assert(
        std::is_nothrow_move_constructible_v<UriReference> && std::is_nothrow_move_assignable_v<UriReference>);
}

TEST(UriReference, KnowsAddressesAsTheSystemDoes)
{
    Random random;
    const std::string_view signs = "0123456789aF::::....";
    const char* const right[] = {"1:2:3:4:5:6:7:8", "::1.2.3.4", "1::8", "1:2:3:4:5:6:1.2.3.4", "fe80::"};
    for (int round = 0; round < 200'000; ++round) {
        const bool isNearlyRight = round % 2 == 0; // of the others few would be right
        std::string text = isNearlyRight ? right[round / 2 % 5] : "";
        for (int changes = random.below(isNearlyRight ? 3 : 12); changes > 0; --changes) {
            const auto place = static_cast<std::size_t>(random.below(static_cast<int>(text.size()) + 1));
            if (random.below(2) == 0)
                text.insert(place, 1, signs[static_cast<std::size_t>(random.below(static_cast<int>(signs.size())))]);
            else
                text.erase(place, 1);
        }
        in6_addr address;
        EXPECT_EQ(
            UriReference::parse("//[" + text + "]").has_value(), ::inet_pton(AF_INET6, text.c_str(), &address) == 1)
            << text;
    }
}

TEST(UriReference, ResolvesTheExamplesOfTheStandard)
{
    const std::pair<const char*, std::vector<std::pair<const char*, const char*>>> cases[] = {
        // 5.4.1 and 5.4.2
        {"http://a/b/c/d;p?q",
            {{"g:h", "g:h"}, {"g", "http://a/b/c/g"}, {"./g", "http://a/b/c/g"}, {"g/", "http://a/b/c/g/"},
                {"/g", "http://a/g"}, {"//g", "http://g"}, {"?y", "http://a/b/c/d;p?y"}, {"g?y", "http://a/b/c/g?y"},
                {"#s", "http://a/b/c/d;p?q#s"}, {"g#s", "http://a/b/c/g#s"}, {"g?y#s", "http://a/b/c/g?y#s"},
                {";x", "http://a/b/c/;x"}, {"g;x", "http://a/b/c/g;x"}, {"g;x?y#s", "http://a/b/c/g;x?y#s"},
                {"", "http://a/b/c/d;p?q"}, {".", "http://a/b/c/"}, {"./", "http://a/b/c/"}, {"..", "http://a/b/"},
                {"../", "http://a/b/"}, {"../g", "http://a/b/g"}, {"../..", "http://a/"}, {"../../", "http://a/"},
                {"../../g", "http://a/g"}, {"../../../g", "http://a/g"}, {"../../../../g", "http://a/g"},
                {"/./g", "http://a/g"}, {"/../g", "http://a/g"}, {"g.", "http://a/b/c/g."}, {".g", "http://a/b/c/.g"},
                {"g..", "http://a/b/c/g.."}, {"..g", "http://a/b/c/..g"}, {"./../g", "http://a/b/g"},
                {"./g/.", "http://a/b/c/g/"}, {"g/./h", "http://a/b/c/g/h"}, {"g/../h", "http://a/b/c/h"},
                {"g;x=1/./y", "http://a/b/c/g;x=1/y"}, {"g;x=1/../y", "http://a/b/c/y"},
                {"g?y/./x", "http://a/b/c/g?y/./x"}, {"g?y/../x", "http://a/b/c/g?y/../x"},
                {"g#s/./x", "http://a/b/c/g#s/./x"}, {"g#s/../x", "http://a/b/c/g#s/../x"}, {"http:g", "http:g"}}},
        // The rest
        {"http://u@h:1", {{"g", "http://u@h:1/g"}, {"?", "http://u@h:1?"}}},
        {"a:b/c?q#f", {{"", "a:b/c?q"}, {"../../d", "a:/d"}, {"#", "a:b/c?q#"}}},
        {"a:b", {{"c", "a:c"}}},
        {"a:/b", {{".//c", "a:/.//c"}, {"/..//c", "a:/.//c"}, {"//h/..//c", "a://h//c"}}},
    };
    EXPECT_FALSE(UriReference().resolve(UriReference()));
    for (const auto& [base, references] : cases) {
        for (const auto& [reference, target] : references) {
            const auto found = UriReference::parse(base)->resolve(*UriReference::parse(reference));
            EXPECT_EQ(std::string(found ? found->getText() : "nothing"), target) << base << " with " << reference;
        }
    }
}

TEST(UriReference, HasANormalForm)
{
    const std::pair<const char*, const char*> cases[] = {
        {"eXAMPLE://a/./b/../b/%63/%7bfoo%7d", "example://a/b/c/%7Bfoo%7D"}, // 6.2.2
        {"HTTP://U%6d:P@Ho%53T%c3:080/%2E%2e/%2f?Q%3d%41#F%7E", "http://Um:P@host%C3:080/%2F?Q%3DA#F~"},
        {"../A/./b", "../A/./b"},
        {"/../A//../b", "/A/b"},
        {"a:..//./b", "a:/b"},
        {"a:/x/..//b", "a:/.//b"},
        {"//[FE80::A]", "//[fe80::a]"},
        {"./a:b", "./a:b"},
    };
    for (const auto& [text, normal] : cases) {
        const UriReference uri = *UriReference::parse(text);
        EXPECT_EQ(uri.normalized().getText(), normal);
        EXPECT_EQ(uri.normalized().normalized(), uri.normalized());
        EXPECT_TRUE(uri.isEquivalentTo(*UriReference::parse(normal)));
    }
}

TEST(UriReference, GivesWhatStandsInItUnescaped)
{
    using Parameters = std::vector<UriReference::Parameter>;
    const auto uri = UriReference::parse("s://h%41:65536/a%2Fb//c%00?x=1&&x=%26+2&y&=z&x=a=b%FF");
    EXPECT_EQ(uri->getHostName(), "hA");
    EXPECT_FALSE(uri->getPort());
    EXPECT_EQ(UriReference::parse("//[::a]:065535")->getPort(), 65535);
    EXPECT_EQ(uri->getSegments(), (std::vector<std::string> {"a/b", "", std::string("c\0", 2)}));
    const Parameters parameters {{"x", "1"}, {"x", "&+2"}, {"y", ""}, {"", "z"}, {"x", "a=b\xFF"}};
    EXPECT_EQ(uri->getParameters(), parameters);
    EXPECT_EQ(uri->getParameters(UriReference::Plus::IS_BLANK)[1].value, "& 2");
    EXPECT_EQ(uri->getParameter("x"), "1");
    EXPECT_FALSE(uri->getParameter("X"));
    const auto again = UriReference::compose({.query = UriReference::queryOf(parameters)});
    EXPECT_EQ(again->getParameters(), parameters);
    EXPECT_EQ(UriReference::escape("a/ é~%", "/"), "a/%20%C3%A9~%25");
    EXPECT_FALSE(UriReference::unescape("%4"));
}

} // namespace
} // namespace vx::net
