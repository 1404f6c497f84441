#include "tests/Outcome.h"
#include "tests/Random.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/crypto/BlowFish.h"
#include "vx/crypto/MD5Digest.h"

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

namespace vx::crypto {
namespace {

using Bytes = std::vector<signed char>;

Bytes fromHex(std::string_view hex)
{
    Bytes bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2)
        bytes.push_back(static_cast<signed char>(std::stoi(std::string(hex.substr(at, 2)), nullptr, 16)));
    return bytes;
}

std::string toHex(const Bytes& bytes)
{
    constexpr const char* DIGITS = "0123456789ABCDEF";
    std::string hex;
    for (const signed char byte : bytes)
        hex.append({DIGITS[byte >> 4 & 15], DIGITS[byte & 15]});
    return hex;
}

Bytes someBytes(Random& random, std::size_t size)
{
    Bytes bytes(size);
    for (signed char& byte : bytes)
        byte = static_cast<signed char>(random());
    return bytes;
}

std::string_view viewOf(const Bytes& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// False if the program is missing or does not know the algorithm.
bool run(const Scratch& scratch, const std::string& command)
{
    return std::system(("cd '" + scratch.getPath().string() + "' && " + command + " 2>/dev/null").c_str()) == 0;
}

TEST(BlowFish, GivesThePublishedBlocks)
{
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
        {"F0E1D2", "FEDCBA9876543210", "E9C2B70A1BC65CF3"},
        {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677", "FEDCBA9876543210", "05044B62FA52D080"},
    };
    for (const auto& [keyText, plain, encrypted] : cases) {
        const Bytes key = fromHex(keyText);
        const BlowFish cipher(key.data(), static_cast<int>(key.size()));
        Bytes bytes = fromHex(plain);
        cipher.encrypt(bytes.data(), bytes.data(), 8);
        EXPECT_EQ(toHex(bytes), encrypted) << keyText;
        cipher.decrypt(bytes.data(), bytes.data(), 8);
        EXPECT_EQ(toHex(bytes), plain) << keyText;
    }
}

TEST(BlowFish, AgreesWithOpenSslOverManyBlocks)
{
    const Scratch scratch;
    Random random;
    for (const std::size_t blocks : {1, 4, 7, 1001}) {
        const Bytes key = someBytes(random, 16); // the one length that the program takes
        const Bytes plain = someBytes(random, 8 * blocks);
        put(scratch / "plain", viewOf(plain));
        const std::string options = " -nopad -provider legacy -provider default -in plain -out cipher -K " + toHex(key);
        if (!run(scratch, "openssl enc -bf-ecb" + options))
            GTEST_SKIP() << "no OpenSSL that knows the cipher";
        const BlowFish cipher(key.data(), static_cast<int>(key.size()));
        Bytes bytes(plain.size());
        cipher.encrypt(bytes.data(), plain.data(), static_cast<int>(plain.size()));
        EXPECT_EQ(viewOf(bytes), contentOf(scratch / "cipher")) << blocks;
        cipher.decrypt(bytes.data(), bytes.data(), static_cast<int>(plain.size()));
        EXPECT_EQ(bytes, plain) << blocks;
    }
}

TEST(BlowFish, LooksAtItsArgumentsFirst)
{
    Random random;
    const Bytes key = someBytes(random, 57);
    Bytes first(16, 3), second(16, 3);
    BlowFish(key.data(), 57).encrypt(first.data(), first.data(), 16);
    BlowFish(key.data(), 56).encrypt(second.data(), second.data(), 16);
    EXPECT_EQ(first, second) << "the rest of a long key does not count";
    const BlowFish unkeyed(nullptr, 0);
    for (const std::int32_t length : {1, 9, -1}) {
        EXPECT_THROW(unkeyed.encrypt(first.data(), first.data(), length), Exception) << length;
        EXPECT_THROW(unkeyed.decrypt(first.data(), first.data(), length), Exception) << length;
    }
    EXPECT_EQ(first, second) << "nothing is written";
    EXPECT_THROW(unkeyed.encrypt(first.data(), nullptr, 8), ResultException);
    EXPECT_THROW(BlowFish(key.data(), -1), ResultException);
}

std::string digestOf(MD5Digest& digest)
{
    Bytes bytes(16);
    digest.getDigest(bytes.data(), 16);
    return toHex(bytes);
}

TEST(MD5Digest, AgreesWithTheSystemHoweverTheMessageIsCut)
{
    const Scratch scratch;
    Random random;
    std::string names, expected;
    MD5Digest digest; // one object for all: each digest starts the next message
    for (std::size_t length = 0; length < 200; ++length) {
        const Bytes message = someBytes(random, length);
        const std::string name = std::to_string(length);
        put(scratch / name.c_str(), viewOf(message));
        names += " " + name;
        for (std::size_t at = 0; at < length;) {
            const std::size_t piece = std::min<std::size_t>(random() % 130, length - at);
            digest.update(message.data() + at, static_cast<int>(piece));
            at += piece;
        }
        expected += digestOf(digest) + "  " + name + "\n";
    }
    ASSERT_TRUE(run(scratch, "md5sum" + names + " | tr a-f A-F > digests"));
    EXPECT_EQ(expected, contentOf(scratch / "digests"));
    EXPECT_EQ(digest.getName(), u"MD5");
}

TEST(MD5Digest, KeepsItsStateWhereItFails)
{
    const signed char letter = 'a';
    signed char target[16] = {};
    MD5Digest digest;
    digest.update(&letter, 1);
    EXPECT_EQ(resultOf([&] { digest.getDigest(target, 15); }), RESULT_BUFFER_TOO_SMALL);
    EXPECT_THROW(digest.getDigest(nullptr, 16), ResultException);
    EXPECT_THROW(digest.update(nullptr, 1), ResultException);
    digest.update(&letter, -1);
    EXPECT_EQ(digestOf(digest), "0CC175B9C0F1B6A831C399E269772661");
    EXPECT_EQ(digestOf(digest), "D41D8CD98F00B204E9800998ECF8427E") << "the next message has begun";
}

} // namespace
} // namespace vx::crypto
