#include "vx/net/URI.h"

#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vx/collections/Elements.h"
#include "vx/collections/detail/Element.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/text/charset/CharsetException.h"

namespace {

using namespace std::literals;
using vx::Exception;
using vx::String;
using vx::collections::collidingText;
using vx::net::QueryKey;
using vx::net::URI;

/// All present parts, as "part=text" in their stored form.
std::string partsOf(const URI& uri)
{
    std::string text;
    const auto add = [&](bool isPresent, const char* name, const std::function<String()>& get) {
        if (isPresent)
            text += (text.empty() ? "" : " ") + std::string(name) + "=" + get().toUtf8();
        else {
            EXPECT_THROW(get(), Exception) << name;
        }
    };
    add(uri.hasScheme(), "scheme", [&] { return uri.getScheme(); });
    add(uri.hasUser(), "user", [&] { return uri.getUser(false); });
    add(uri.hasPassword(), "password", [&] { return uri.getPassword(false); });
    add(uri.hasHost(), "host", [&] { return uri.getHost(false); });
    add(uri.hasPort(), "port", [&] { return String::valueOf(uri.getPort()); });
    add(uri.hasPath(), "path", [&] { return uri.getPath(false); });
    if (uri.hasQuery())
        add(true, "query", [&] { return uri.getQuery(false); });
    if (uri.isOpaque())
        add(true, "opaque", [&] { return uri.getSchemeSpecificPart(false); });
    return text;
}

TEST(URI, TakesAnyTextApart)
{
    struct {
        const char *text, *parts, *printed; // null: as it was
    } cases[] = {
        {"s://user@host:80/a/b?x=1", "scheme=s user=user host=host port=80 path=a/b query=x=1", nullptr},
        {"s://@h", "scheme=s user= host=h", nullptr},
        {"s://u:@/", "scheme=s user=u password= path=", nullptr},
        {"s://a@b@c/", "scheme=s user=a host=b@c path=", nullptr},
        {"host:80/a", "scheme=host opaque=80/a", nullptr},
        {":/a", "scheme= path=a", nullptr},
        {"", "path=", "/"},
        {"a?b", "path=a query=b=b", "/a?b=b"},
        {"//", "", ""},
        {"//host?", "host=host query=", nullptr},
        {"//?/", "host=? path= query=/=/", "//?/?/=/"}, // the slash is looked for after the "?" too
        {"s:///a", "scheme=s path=a", "s:/a"},
        {"s://h:abc", "scheme=s host=h port=0", "s://h:0"},
        {"s://h:99999999999", "scheme=s host=h port=2147483647", "s://h:2147483647"},
        {"s://:80", "scheme=s port=80", "s:"},
        {"s://[::1]:80/", "scheme=s host=[ port=0 path=", "s://[:0/"},
        {"?a=b", "query=?a=b", "??a=b"},
        {"/?a=b=c&&d", "path= query=d=d&a=b=c&=", "/?d=d&a=b=c&="},
    };
    for (const auto& row : cases) {
        const URI uri(String(std::string_view(row.text)));
        EXPECT_EQ(partsOf(uri), row.parts) << row.text;
        EXPECT_EQ(uri.toString().toUtf8(), row.printed != nullptr ? row.printed : row.text);
        EXPECT_FALSE(uri.hasFragment());
    }
}

TEST(URI, EscapesWhatThePartCannotHold)
{
    const String ascii(u" !\"#$%&'()*+,-./09:;<=>?@AZ[\\]^_`az{|}~\x7F");
    URI uri;
    uri.setUser(ascii, true);
    uri.setPath(ascii, true);
    uri.setQueryPair(u"k", ascii, true);
    EXPECT_EQ(uri.getUser(false), u"%20!%22%23$%25&'()*+,-.%2F09%3A%3B%3C=%3E%3F%40AZ%5B%5C%5D%5E_%60az%7B%7C%7D~%7F");
    EXPECT_EQ(uri.getPath(false), u"%20!%22%23$%25&'()*+,-.%2F09:%3B%3C%3D%3E%3F@AZ%5B%5C%5D%5E_%60az%7B%7C%7D~%7F");
    EXPECT_EQ(uri.getQueryValue(u"k", false),
        u"%20!%22%23%24%25%26'()*%2B%2C-.%2F09%3A%3B%3C%3D%3E%3F%40AZ%5B%5C%5D%5E_%60az%7B%7C%7D~%7F");
    uri.setUser(u"\u00E4\U0001F600", true);
    EXPECT_EQ(uri.getUser(false), u"%c3%a4%f0%9f%98%80");
    EXPECT_EQ(uri.getUser(true), u"\u00E4\U0001F600");
    EXPECT_THROW(uri.setHost(u"\xD800", true), vx::text::charset::InvalidCharacterException);
    EXPECT_FALSE(uri.hasHost());
}

TEST(URI, SetsAndRemovesPartAfterPart)
{
    struct {
        const char* what;
        void (*edit)(URI& uri);
        const char* printed;
    } cases[] = {
        {"scheme", [](URI& u) { u.removeScheme(); }, "//u:p@h:1/a?k=v"},
        {"user", [](URI& u) { u.removeUser(); }, "s://h:1/a?k=v"},
        {"password", [](URI& u) { u.removePassword(); }, "s://u@h:1/a?k=v"},
        {"user information", [](URI& u) { u.removeUserInfo(), u.setUser(u"w", false); }, "s://w@h:1/a?k=v"},
        {"host", [](URI& u) { u.removeHost(); }, "s://u:p@:1/a?k=v"},
        {"port", [](URI& u) { u.removePort(); }, "s://u:p@h/a?k=v"},
        {"path", [](URI& u) { u.removePath(); }, "s://u:p@h:1?k=v"},
        {"query", [](URI& u) { u.removeQuery(), u.setQuery(u"", false); }, "s://u:p@h:1/a?"},
        {"authority", [](URI& u) { u.removeAuthority(), u.setHost(u"x", false); }, "s://x/a?k=v"},
        {"part", [](URI& u) { u.removeSchemeSpecificPart(), u.setPath(u"b", false); }, "s:/b"},
        {"all", [](URI& u) { u.removeAll(); }, ""},
        {"set user information", [](URI& u) { u.setUserInfo(u"a/b:c:d", true); }, "s://a%2Fb:c%3Ad@h:1/a?k=v"},
        {"set user alone", [](URI& u) { u.setUserInfo(u"a", false); }, "s://a:p@h:1/a?k=v"},
        {"set authority", [](URI& u) { u.setAuthority(u"x@y:2", false); }, "s://x:p@y:2/a?k=v"},
        {"set port alone", [](URI& u) { u.setAuthority(u":3", false); }, "s://u:p@h:3/a?k=v"},
        {"fragment", [](URI& u) { u.setFragment(u"f"); }, "s://u:p@h:1/a?k=v"},
    };
    for (const auto& row : cases) {
        URI uri(u"s://u:p@h:1/a?k=v");
        row.edit(uri);
        EXPECT_EQ(uri.toString(), row.printed) << row.what;
    }
    URI uri(u"s:o");
    uri.removeAll();
    EXPECT_EQ(uri.getSchemeSpecificPart(true), u"o") << "an opaque part stays";
    uri.setPort(1);
    EXPECT_FALSE(uri.hasAuthority() || uri.hasUserInfo() || uri.hasFragment() || !uri.getFragment().isEmpty());
    EXPECT_THROW(uri.getUserInfo(false), Exception);
    uri.setUserInfo(u"a%20:b%20", false);
    EXPECT_EQ(uri.getUserInfo(true), u"a :b%20") << "a password is never unescaped here";
    EXPECT_TRUE(uri.hasAuthority());
}

TEST(URI, ReadsEscapesAsThePlatformReadsNumbers)
{
    const std::pair<const char16_t*, std::u16string> cases[] = {{u"%41%4a%4A", u"AJJ"}, {u"%zz|%0x|%5z", u"\0|\0|\5"s},
        {u"% 7%+7", u"\7\7"}, {u"%C3%A4\u00E4", u"\u00E4\u00E4"}};
    URI uri;
    const auto textOf = [&](const String& stored) {
        uri.setPath(stored, false);
        EXPECT_EQ(uri.getPath(false), stored);
        try {
            return std::u16string(uri.getPath(true).view());
        } catch (const Exception&) {
            return u"throws"s;
        }
    };
    for (const auto& [stored, text] : cases)
        EXPECT_EQ(textOf(stored), text);
    for (const char16_t* cut : {u"a%4", u"a%", u"%"})
        EXPECT_EQ(textOf(cut), u"throws") << String(cut);
    for (const char16_t* text : {u"A\xD800x", u"Ax\xDC00", u"A\xD83D\xDE00"}) // the first two are no text
        EXPECT_EQ(textOf(text), textOf(u"%41" + String(text).substring(1))) << "with and without an escape";
}

TEST(URI, IsCopiedAndMovedWithAllItsParts)
{
    for (const char* text : {"s://u:p@h:1/a?k=v&b=%41", "tel:123", ""}) {
        URI uri {String(std::string_view(text))};
        for (const char16_t* query : {u"", u"more=1"}) { // of which the second makes a table
            if (uri.hasQuery())
                uri.setQuery(query, false);
            const std::string parts = partsOf(uri);
            URI copy(uri);
            URI assigned(u"other://x?y=z");
            assigned = copy;
            URI& same = assigned;
            assigned = same;
            copy.setHost(u"changed", false);
            copy.setQueryPair(u"k", u"changed", false);
            EXPECT_EQ(partsOf(uri) + partsOf(assigned), parts + parts);

            URI moved(std::move(assigned));
            EXPECT_EQ(partsOf(assigned), "");
            assigned.setUri(u"s://again?a=b", false);
            EXPECT_EQ(assigned.toString(), u"s://again?a=b");
            assigned = std::move(moved);
            EXPECT_EQ(partsOf(assigned), parts);
        }
    }
}

TEST(URI, FindsParametersInAnyCase)
{
    URI uri;
    uri.setQueryPair(u"Key", u"v", false);
    uri.setQuery(u"KEY=w&a", false);
    EXPECT_EQ(uri.getQueryValue(u"kEY", false), u"w");
    EXPECT_EQ(uri.getQueryValue(u"A", false), u"a");
    EXPECT_THROW(uri.getQueryValue(u"b", false), Exception);
    uri.removeQueryPair(u"A");
    EXPECT_EQ(uri.toString(), u"?Key=w"); // spelled as at first
    EXPECT_TRUE(uri.hasQuery());
    uri.removeQueryPair(u"key");
    EXPECT_FALSE(uri.hasQuery());
    EXPECT_EQ(uri.toString(), u"");

    uri.setQueryPair(u"a b", u"c d", true);
    EXPECT_FALSE(uri.hasQueryValue(u"a b"));
    EXPECT_EQ(uri.getQueryValue(u"A%20B", true), u"c d");
    EXPECT_EQ(uri.getQuery(true), u"a%20b=c d");

    // The lower-case form of a key, and so its hash, ends at a zero unit.
    uri.setQuery(u"a\0B=c"sv, false);
    EXPECT_TRUE(uri.hasQueryValue(u"A\0B"sv));
    EXPECT_FALSE(uri.hasQueryValue(u"A\0b"sv));
    EXPECT_TRUE(URI(u"/?a\0B=c"sv).hasQueryValue(u"A\0B"sv));
}

TEST(URI, PrintsParametersInTheOrderOfTheMap)
{
    const vx::Reference<vx::collections::vorb::HashMap> plain(new vx::collections::vorb::HashMap(101, 0.75F));
    const auto orderOfMap = [&] {
        String text;
        const auto keys = plain->createKeySet();
        for (const auto each = keys->createIterator(); each->hasNext();)
            text += (text.isEmpty() ? u"" : u"&")
                + static_cast<QueryKey&>(*vx::collections::detail::fromElement<QueryKey>(each->next())) + u"=";
        return text;
    };
    const auto keyOf
        = [](int number) { return vx::Reference<QueryKey>(new QueryKey(u"Key" + String::valueOf(number * number))); };
    URI uri;
    const auto put = [&](int number) {
        plain->put(static_cast<vx::ComObject*>(keyOf(number).get()), nullptr);
        uri.setQueryPair(*keyOf(number), u"", false);
    };
    String text;
    for (int number = 0; number < 300; ++number) {
        put(number);
        text += (number > 0 ? u"&" : u"") + static_cast<const String&>(*keyOf(number)) + u"=";
        URI parsed;
        parsed.setQuery(text + u"&KEY0=", false); // the last one is there already
        ASSERT_EQ(parsed.getQuery(false), uri.getQuery(false)) << number;
    }
    EXPECT_EQ(uri.getQuery(false), orderOfMap());
    for (int number = 0; number < 300; number += 3) {
        plain->remove(static_cast<vx::ComObject*>(keyOf(number).get()));
        uri.removeQueryPair(*keyOf(number));
    }
    for (int number = 300; number < 600; ++number)
        put(number);
    EXPECT_EQ(uri.getQuery(false), orderOfMap());

    // A cleared query keeps its buckets, even if no parameter was ever requested.
    URI parsed(u"/?" + uri.getQuery(false));
    plain->clear();
    uri.removeQuery();
    parsed.removeQuery();
    for (int number = 0; number < 20; ++number) {
        put(number);
        parsed.setQueryPair(*keyOf(number), u"", false);
    }
    EXPECT_EQ(uri.getQuery(false), orderOfMap());
    EXPECT_EQ(parsed.getQuery(false), orderOfMap());
}

TEST(URI, GivesRandomPartsBack)
{
    Random random;
    const auto text = [&] {
        std::u16string units;
        for (unsigned count = 1 + random() % 12; count > 0; --count) {
            if (const int kind = random.below(4); kind == 0)
                units += static_cast<char16_t>(0xA0 + random() % 0xD000);
            else if (kind == 1)
                units += u"\U0001F601";
            else
                units += static_cast<char16_t>(1 + random() % 0x7F);
        }
        return String(units);
    };
    const struct {
        unsigned presence; ///< its bits in the random number
        void (URI::*set)(const String&, bool);
        String (URI::*get)(bool) const;
    } rows[] = {{0, &URI::setHost, &URI::getHost}, {1, &URI::setUser, &URI::getUser},
        {3, &URI::setPassword, &URI::getPassword}, {4, &URI::setPath, &URI::getPath}};
    for (unsigned round = 0; round < 2000; ++round) {
        const unsigned present = random();
        const String parts[] = {text(), text(), text(), text()}, value = text();
        URI uri;
        uri.setScheme(u"s");
        for (const auto& row : rows) {
            if ((present & row.presence) == row.presence)
                (uri.*row.set)(parts[&row - rows], true);
        }
        if ((present & 8) != 0)
            uri.setQueryPair(text(), value, true);
        if ((present & 16) != 0)
            uri.setPort(random.below(65536));

        const URI again(uri.toString());
        ASSERT_EQ(partsOf(again), partsOf(uri));
        ASSERT_EQ(again.toString(), uri.toString());
        for (const auto& row : rows)
            ASSERT_TRUE((present & row.presence) != row.presence || (again.*row.get)(true) == parts[&row - rows]);
        if ((present & 8) != 0) {
            const String query = again.getQuery(false);
            ASSERT_EQ(again.getQueryValue(query.substring(0, query.indexOf(u'=')), true), value);
        }
    }
}

TEST(URI, EndsSoonOnHostileText)
{
    constexpr int MILLION = 1'000'000;
    URI uri;
    uri.setSchemeSpecificPart(
        u"//" + String(u'@', MILLION) + String(u':', MILLION) + String(u'/', MILLION) + u"?" + String(u'&', MILLION),
        false);
    EXPECT_EQ(uri.getHost(false).getLength(), MILLION - 1);
    EXPECT_EQ(uri.getPath(false).getLength(), MILLION - 1);
    EXPECT_EQ(uri.getQuery(false), u"=");
    uri.setQuery(String(u'=', MILLION), true);
    EXPECT_EQ(uri.getQueryValue(u"", false).getLength(), 3 * (MILLION - 1));
    uri.setPath(String(u'%', MILLION), true);
    EXPECT_EQ(uri.getPath(true).getLength(), MILLION);

    // Keys that differ only in units that the hash does not read.
    constexpr unsigned KEYS = 100'000;
    std::u16string query;
    for (unsigned number = 0; number < KEYS; ++number)
        query.append(number > 0 ? u"&" : u"").append(collidingText(number));
    URI alike(u"/?" + String(query));
    EXPECT_EQ(alike.toString().getLength(), 2 + static_cast<int>(2 * query.size() + 1));
    for (unsigned number = 0; number < KEYS; ++number)
        ASSERT_EQ(alike.getQueryValue(String(collidingText(number)), false), collidingText(number));
    for (unsigned number = 0; number < KEYS; ++number)
        alike.removeQueryPair(String(collidingText(number)));
    EXPECT_EQ(alike.toString(), u"/");
}

} // namespace
