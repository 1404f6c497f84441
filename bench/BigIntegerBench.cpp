#include "vx/String.h"
#include "vx/math/BigInteger.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#ifdef VX_BENCH_BOOST
#include <boost/multiprecision/cpp_int.hpp>
#endif
#ifdef VX_BENCH_GMP
#include <gmp.h>
#endif
#ifdef VX_BENCH_OPENSSL
#include <openssl/bn.h>
#endif

// Each library does the same work on the same numbers in the same run, and its results must print as ours do.

namespace {

struct Ours {
    using Number = vx::math::BigInteger;
    using Text = vx::String;

    static void parse(Number& target, const Text& text) { target = Number(text, 10); }
    static Text print(const Number& value) { return value.toString(10); }
    static void multiply(Number& target, const Number& left, const Number& right)
    {
        target = left;
        target.multiply(right);
    }
    static void divide(Number& quotient, Number& rest, const Number& dividend, const Number& divisor)
    {
        quotient = dividend;
        quotient.divide(divisor, rest);
    }
    static void modPow(Number& target, const Number& base, const Number& exponent, const Number& modulus)
    {
        target = base;
        target.modPow(exponent, modulus);
    }
    static std::string narrow(const Text& text) { return text.toUtf8(); }
};

#ifdef VX_BENCH_BOOST
struct Boost {
    using Number = boost::multiprecision::cpp_int;
    using Text = std::string;

    static void parse(Number& target, const Text& text) { target.assign(text); }
    static Text print(const Number& value) { return value.str(); }
    static void multiply(Number& target, const Number& left, const Number& right)
    {
        boost::multiprecision::multiply(target, left, right);
    }
    static void divide(Number& quotient, Number& rest, const Number& dividend, const Number& divisor)
    {
        boost::multiprecision::divide_qr(dividend, divisor, quotient, rest);
    }
    static void modPow(Number& target, const Number& base, const Number& exponent, const Number& modulus)
    {
        target = boost::multiprecision::powm(base, exponent, modulus);
    }
    static std::string narrow(const Text& text) { return text; }
};
#endif

#ifdef VX_BENCH_GMP
struct Gmp {
    struct Number {
        Number() { mpz_init(value); }
        Number(const Number&) = delete;
        Number& operator=(const Number&) = delete;
        ~Number() { mpz_clear(value); }
        mpz_t value;
    };
    using Text = std::string;

    static void parse(Number& target, const Text& text) { mpz_set_str(target.value, text.c_str(), 10); }
    static Text print(const Number& number)
    {
        Text text(mpz_sizeinbase(number.value, 10) + 2, '\0');
        mpz_get_str(text.data(), 10, number.value);
        text.resize(text.find('\0'));
        return text;
    }
    static void multiply(Number& target, const Number& left, const Number& right)
    {
        mpz_mul(target.value, left.value, right.value);
    }
    static void divide(Number& quotient, Number& rest, const Number& dividend, const Number& divisor)
    {
        mpz_tdiv_qr(quotient.value, rest.value, dividend.value, divisor.value);
    }
    static void modPow(Number& target, const Number& base, const Number& exponent, const Number& modulus)
    {
        mpz_powm(target.value, base.value, exponent.value, modulus.value);
    }
    static std::string narrow(const Text& text) { return text; }
};
#endif

#ifdef VX_BENCH_OPENSSL
/// Its quadratic conversions are left out, but for the operands and results.
struct OpenSsl {
    struct Number {
        Number() = default;
        Number(const Number&) = delete;
        Number& operator=(const Number&) = delete;
        ~Number() { BN_free(value); }
        BIGNUM* value = BN_new();
    };
    using Text = std::string;

    static void parse(Number& target, const Text& text) { BN_dec2bn(&target.value, text.c_str()); }
    static Text print(const Number& number)
    {
        const std::unique_ptr<char, void (*)(char*)> text(
            BN_bn2dec(number.value), [](char* memory) { OPENSSL_free(memory); });
        return text.get();
    }
    static void modPow(Number& target, const Number& base, const Number& exponent, const Number& modulus)
    {
        static const std::unique_ptr<BN_CTX, void (*)(BN_CTX*)> context(BN_CTX_new(), BN_CTX_free);
        BN_mod_exp(target.value, base.value, exponent.value, modulus.value, context.get());
    }
    static std::string narrow(const Text& text) { return text; }
};
#endif

std::string digits(std::int64_t count, unsigned int seed)
{
    std::minstd_rand random(seed);
    std::string text(1, static_cast<char>('1' + random() % 9));
    while (text.size() < static_cast<std::size_t>(count))
        text += static_cast<char>('0' + random() % 10);
    return text;
}

template <class Library>
typename Library::Text textOf(const std::string& text)
{
    return typename Library::Text(std::string_view(text));
}

template <class Library>
void check(benchmark::State& state, const typename Library::Number& result, const vx::math::BigInteger& wanted)
{
    if (Library::narrow(Library::print(result)) != wanted.toString().toUtf8())
        state.SkipWithError("another result");
}

template <class Library>
void multiply(benchmark::State& state)
{
    const std::string left = digits(state.range(0), 1);
    const std::string right = digits(state.range(0), 2);
    typename Library::Number x, y, product;
    Library::parse(x, textOf<Library>(left));
    Library::parse(y, textOf<Library>(right));
    for (auto _ : state) {
        Library::multiply(product, x, y);
        benchmark::DoNotOptimize(product);
    }
    vx::math::BigInteger wanted(vx::String(left), 10);
    wanted.multiply(vx::math::BigInteger(vx::String(right), 10));
    check<Library>(state, product, wanted);
}

/// A number of twice the digits by one of the digits.
template <class Library>
void divide(benchmark::State& state)
{
    const std::string dividend = digits(2 * state.range(0), 3);
    const std::string divisor = digits(state.range(0), 4);
    typename Library::Number x, y, quotient, rest;
    Library::parse(x, textOf<Library>(dividend));
    Library::parse(y, textOf<Library>(divisor));
    for (auto _ : state) {
        Library::divide(quotient, rest, x, y);
        benchmark::DoNotOptimize(quotient);
        benchmark::DoNotOptimize(rest);
    }
    vx::math::BigInteger wanted(vx::String(dividend), 10);
    vx::math::BigInteger wantedRest;
    wanted.divide(vx::math::BigInteger(vx::String(divisor), 10), wantedRest);
    check<Library>(state, quotient, wanted);
    check<Library>(state, rest, wantedRest);
}

template <class Library>
void parse(benchmark::State& state)
{
    const std::string source = digits(state.range(0), 5);
    const auto text = textOf<Library>(source);
    typename Library::Number value;
    for (auto _ : state) {
        Library::parse(value, text);
        benchmark::DoNotOptimize(value);
    }
    check<Library>(state, value, vx::math::BigInteger(vx::String(source), 10));
}

template <class Library>
void print(benchmark::State& state)
{
    const std::string source = digits(state.range(0), 6);
    typename Library::Number value;
    Library::parse(value, textOf<Library>(source));
    typename Library::Text text;
    for (auto _ : state) {
        text = Library::print(value);
        benchmark::DoNotOptimize(text);
    }
    if (Library::narrow(text) != source)
        state.SkipWithError("another text");
}

/// All numbers have this many bits, as in a signature; the modulus is odd.
template <class Library>
void modPow(benchmark::State& state)
{
    std::string texts[3];
    for (unsigned int seed = 0; seed < 3; ++seed) {
        vx::math::BigInteger number(vx::String(digits(state.range(0) / 3, 7 + seed)), 10);
        for (int bit = number.getBitCount() - 1; bit >= state.range(0); --bit)
            number.clearBit(bit);
        number.setBit(static_cast<int>(state.range(0)) - (seed == 0 ? 2 : 1));
        number.setBit(0);
        texts[seed] = number.toString().toUtf8();
    }
    typename Library::Number base, exponent, modulus, power;
    Library::parse(base, textOf<Library>(texts[0]));
    Library::parse(exponent, textOf<Library>(texts[1]));
    Library::parse(modulus, textOf<Library>(texts[2]));
    for (auto _ : state) {
        Library::modPow(power, base, exponent, modulus);
        benchmark::DoNotOptimize(power);
    }
    vx::math::BigInteger wanted, times, divisor;
    Ours::parse(wanted, textOf<Ours>(texts[0]));
    Ours::parse(times, textOf<Ours>(texts[1]));
    Ours::parse(divisor, textOf<Ours>(texts[2]));
    wanted.modPow(times, divisor);
    check<Library>(state, power, wanted);
}

void sizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(1000)->Arg(10000)->Arg(1000000);
}
void quadraticSizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(1000)->Arg(10000);
}
void keySizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(1024)->Arg(2048)->Arg(4096);
}

// The conversions and quotients of boost take minutes at the largest size.
#ifdef VX_BENCH_BOOST
#define VX_BENCH_WITH_BOOST(work, arguments) BENCHMARK_TEMPLATE(work, Boost)->Apply(arguments);
#else
#define VX_BENCH_WITH_BOOST(work, arguments)
#endif
#ifdef VX_BENCH_GMP
#define VX_BENCH_WITH_GMP(work, arguments) BENCHMARK_TEMPLATE(work, Gmp)->Apply(arguments);
#else
#define VX_BENCH_WITH_GMP(work, arguments)
#endif
#define VX_BENCH(work)                                                                                                 \
    BENCHMARK_TEMPLATE(work, Ours)->Apply(sizes);                                                                      \
    VX_BENCH_WITH_BOOST(work, quadraticSizes)                                                                          \
    VX_BENCH_WITH_GMP(work, sizes)

VX_BENCH(multiply)
VX_BENCH(divide)
VX_BENCH(parse)
VX_BENCH(print)

BENCHMARK_TEMPLATE(modPow, Ours)->Apply(keySizes);
VX_BENCH_WITH_BOOST(modPow, keySizes)
VX_BENCH_WITH_GMP(modPow, keySizes)
#ifdef VX_BENCH_OPENSSL
BENCHMARK_TEMPLATE(modPow, OpenSsl)->Apply(keySizes);
#endif

} // namespace
