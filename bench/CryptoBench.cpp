/// MD5 and Blowfish over blocks of memory, beside OpenSSL's libcrypto.

#include "vx/Object.h"
#include "vx/crypto/BlowFish.h"
#include "vx/crypto/MD5Digest.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#ifdef VX_BENCH_OPENSSL
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/blowfish.h>
#include <openssl/md5.h>
#endif

using namespace vx::crypto;

namespace {

constexpr signed char KEY[] = "a key of 16 byte";
constexpr int KEY_SIZE = 16;

struct Ours {
    static void digest(const signed char* bytes, int length, signed char* target)
    {
        MD5Digest md5;
        md5.update(bytes, length);
        md5.getDigest(target, 16);
    }
    template <bool forwards>
    static void crypt(signed char* target, const signed char* source, int length)
    {
        static const BlowFish cipher(KEY, KEY_SIZE);
        if constexpr (forwards)
            cipher.encrypt(target, source, length);
        else
            cipher.decrypt(target, source, length);
    }
};

#ifdef VX_BENCH_OPENSSL
struct OpenSsl {
    static void digest(const signed char* bytes, int length, signed char* target)
    {
        ::MD5(reinterpret_cast<const unsigned char*>(bytes), static_cast<std::size_t>(length),
            reinterpret_cast<unsigned char*>(target));
    }
    template <bool forwards>
    static void crypt(signed char* target, const signed char* source, int length)
    {
        static const BF_KEY key = [] {
            BF_KEY made;
            ::BF_set_key(&made, KEY_SIZE, reinterpret_cast<const unsigned char*>(KEY));
            return made;
        }();
        for (int at = 0; at < length; at += 8)
            ::BF_ecb_encrypt(reinterpret_cast<const unsigned char*>(source) + at,
                reinterpret_cast<unsigned char*>(target) + at, &key, forwards ? BF_ENCRYPT : BF_DECRYPT);
    }
};
#else
using OpenSsl = Ours;
#endif

std::vector<signed char> message(std::int64_t size)
{
    std::vector<signed char> bytes(static_cast<std::size_t>(size));
    std::uint32_t state = 1;
    for (signed char& byte : bytes)
        byte = static_cast<signed char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

template <class Peer>
void md5(benchmark::State& state)
{
    const std::vector<signed char> bytes = message(state.range(0));
    const int length = static_cast<int>(bytes.size());
    signed char digest[16];
    signed char expected[16];
    OpenSsl::digest(bytes.data(), length, expected);
    for (auto _ : state) {
        Peer::digest(bytes.data(), length, digest);
        benchmark::DoNotOptimize(digest);
    }
    if (std::memcmp(digest, expected, sizeof digest) != 0)
        state.SkipWithError("another digest");
    state.SetBytesProcessed(state.iterations() * length);
}

template <class Peer, bool forwards>
void crypt(benchmark::State& state)
{
    const std::vector<signed char> source = message(state.range(0));
    const int length = static_cast<int>(source.size());
    std::vector<signed char> target(source.size());
    std::vector<signed char> expected(source.size());
    OpenSsl::crypt<forwards>(expected.data(), source.data(), length);
    for (auto _ : state) {
        Peer::template crypt<forwards>(target.data(), source.data(), length);
        benchmark::ClobberMemory();
    }
    if (target != expected)
        state.SkipWithError("another cipher");
    state.SetBytesProcessed(state.iterations() * length);
}

template <class Peer>
void blowfishEncrypt(benchmark::State& state)
{
    crypt<Peer, true>(state);
}

template <class Peer>
void blowfishDecrypt(benchmark::State& state)
{
    crypt<Peer, false>(state);
}

BENCHMARK(md5<Ours>)->Arg(64)->Arg(1 << 20);
BENCHMARK(blowfishEncrypt<Ours>)->Arg(64)->Arg(1 << 20);
BENCHMARK(blowfishDecrypt<Ours>)->Arg(1 << 20);
#ifdef VX_BENCH_OPENSSL
BENCHMARK(md5<OpenSsl>)->Arg(64)->Arg(1 << 20);
BENCHMARK(blowfishEncrypt<OpenSsl>)->Arg(64)->Arg(1 << 20);
BENCHMARK(blowfishDecrypt<OpenSsl>)->Arg(1 << 20);
#endif

} // namespace
