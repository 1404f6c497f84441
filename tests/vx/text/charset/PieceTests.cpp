#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/Decoder.h"
#include "vx/text/charset/Encoder.h"

namespace vx::text::charset {
namespace {

/// Calls `take` with parts of `whole`, many of them with one unit or none.
template <class Text, class Take>
void inPieces(Random& random, Text whole, Take take)
{
    while (!whole.empty()) {
        const std::size_t length = std::min<std::size_t>(
            whole.size(), static_cast<std::size_t>(random.below(random.below(3) == 0 ? 3'000 : 3)));
        take(whole.substr(0, length));
        whole.remove_prefix(length);
    }
}

TEST(Pieces, GiveWhatTheWholeTextGives)
{
    Random random;
    for (const char16_t* encoding : {u"UTF-8", u"UTF-16LE", u"UTF-32BE", u"AMP-7", u"CP1252"}) {
        for (int round = 0; round < 40; ++round) {
            std::u16string text;
            for (int left = random.below(4'000); left > 0; --left) {
                const int kind = random.below(4);
                if (kind == 3 && encoding[0] == u'U')
                    text += u"\U0001F600";
                else
                    text += static_cast<char16_t>(
                        kind == 0 || encoding[0] == u'C' ? 1 + random.below(0x7E) : 0x100 + random.below(0x2000));
            }
            Encoder encoder {String(encoding)};
            std::string bytes;
            inPieces(random, std::u16string_view(text), [&](auto piece) { bytes += encoder.encode(piece); });
            bytes += encoder.finish();
            Encoder atOnce {String(encoding)};
            std::string whole = atOnce.encode(text);
            whole += atOnce.finish();
            ASSERT_EQ(bytes, whole) << String(encoding);

            Decoder decoder {String(encoding)};
            String decoded;
            inPieces(random, std::string_view(bytes), [&](auto piece) { decoded += decoder.decode(piece); });
            decoded += decoder.finish();
            ASSERT_EQ(decoded, text) << String(encoding);
        }
    }
}

TEST(Pieces, BeginANewTextAfterAFault)
{
    Decoder decoder(u"UTF-8");
    EXPECT_EQ(decoder.decode("a\xE4\xB8"), u"a");
    EXPECT_EQ(decoder.finish(), u"\uFFFD\uFFFD") << "one for each byte of the incomplete character";
    EXPECT_EQ(decoder.decode("b\xC3"), u"b");
    decoder.setSubstitutionMode(false);
    EXPECT_THROW(decoder.finish(), InvalidCharacterException);
    EXPECT_THROW(decoder.decode("c\xED\xA0\x80"), InvalidCharacterException);
    EXPECT_EQ(decoder.decode("d") + decoder.finish(), u"d");

    Encoder encoder(u"UTF-8");
    EXPECT_EQ(encoder.encode(u"a\xD83D"), "a");
    EXPECT_THROW(encoder.finish(), InvalidCharacterException);
    EXPECT_EQ(encoder.encode(u"b\xD83D"), "b");
    EXPECT_THROW(encoder.encode(u"x"), InvalidCharacterException);
    EXPECT_EQ(encoder.encode(u"c") + encoder.finish(), "c");
    const std::u16string cut = std::u16string(3000, u'x') + u'\xD83D';
    const int failures = failEachAllocation(
        [&] {
            encoder.encode(cut);
            encoder.encode(u"\xDE00");
        },
        [&](int) { EXPECT_EQ(encoder.encode(u"d") + encoder.finish(), "d"); });
    EXPECT_NE(failures, 1) << "each text grows more than once; the allocator of a sanitizer may refuse to fail";
    EXPECT_THROW(Decoder(u"none"), UnknownEncodingException);
    EXPECT_THROW(Encoder(u"none"), UnknownEncodingException);
}

} // namespace
} // namespace vx::text::charset
