#include "vx/String.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <ios>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#ifdef VX_BENCH_BOOST
#include <boost/multiprecision/cpp_dec_float.hpp>
#endif
#ifdef __GLIBC__
#include <malloc.h>
#endif

// What an invoice does with its amounts: the same work on the same numbers in the same run, with equal results as text.

namespace {

struct Ours {
    using Number = vx::math::BigDecimal;
    using Text = vx::String;

    static void parse(Number& target, const Text& text) { target = Number(text); }
    static Text print(const Number& value) { return value.toString(); }
    static void add(Number& target, const Number& other) { target.add(other); }
    /// Rounded to cents.
    static void tax(Number& target, const Number& amount, const Number& rate)
    {
        static const Number ONE(1);
        target = amount;
        target.multiply(rate);
        target.divide(ONE, 2);
    }
    static void divide(Number& target, const Number& left, const Number& right)
    {
        target = left;
        target.divide(right, 20);
    }
    static std::string narrow(const Text& text) { return text.toUtf8(); }
};

#ifdef VX_BENCH_BOOST
struct Boost {
    using Number = boost::multiprecision::cpp_dec_float_50;
    using Text = std::string;

    static void parse(Number& target, const Text& text) { target.assign(text); }
    static Text print(const Number& value) { return value.str(2, std::ios_base::fixed); }
    static void add(Number& target, const Number& other) { target += other; }
    static void tax(Number& target, const Number& amount, const Number& rate)
    {
        target = round(amount * rate * 100) / 100;
    }
    static void divide(Number& target, const Number& left, const Number& right) { target = left / right; }
    static std::string narrow(const Text& text) { return text; }
};
#endif

constexpr std::string_view AMOUNTS[]
    = {"19.99", "1204.50", "0.07", "350000.00", "7.25", "99.95", "12345678.90", "3.33"};

template <class Library>
struct Invoice {
    Invoice()
    {
        for (const std::string_view amount : AMOUNTS) {
            texts.push_back(typename Library::Text(amount));
            Library::parse(amounts.emplace_back(), texts.back());
        }
        Library::parse(rate, typename Library::Text(std::string_view("0.19")));
    }

    std::vector<typename Library::Text> texts;
    std::vector<typename Library::Number> amounts;
    typename Library::Number rate, result;
};

template <class Library>
void check(benchmark::State& state, const typename Library::Number& result, std::string_view wanted)
{
    if (Library::narrow(Library::print(result)).substr(0, wanted.size()) != wanted)
        state.SkipWithError("another result");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(std::size(AMOUNTS)));
}

/// Does `work` with each of the amounts or texts. `wanted` is how the last result begins.
template <class Library, class Items, class Work>
void forEach(benchmark::State& state, Items Invoice<Library>::*items, std::string_view wanted, Work&& work)
{
    Invoice<Library> invoice;
    for (auto _ : state) {
        for (const auto& item : invoice.*items) {
            work(invoice, item);
            benchmark::DoNotOptimize(invoice.result);
        }
    }
    check<Library>(state, invoice.result, wanted);
}

template <class Library>
void sum(benchmark::State& state)
{
    Invoice<Library> invoice;
    for (auto _ : state) {
        invoice.result = 0;
        for (const auto& amount : invoice.amounts)
            Library::add(invoice.result, amount);
        benchmark::DoNotOptimize(invoice.result);
    }
    check<Library>(state, invoice.result, "12697013.99");
}

template <class Library>
void tax(benchmark::State& state)
{
    forEach<Library>(state, &Invoice<Library>::amounts, "0.63",
        [](auto& invoice, const auto& amount) { Library::tax(invoice.result, amount, invoice.rate); });
}

template <class Library>
void quotient(benchmark::State& state)
{
    forEach<Library>(state, &Invoice<Library>::amounts, "17.5",
        [](auto& invoice, const auto& amount) { Library::divide(invoice.result, amount, invoice.rate); });
}

template <class Library>
void parseAmount(benchmark::State& state)
{
    forEach<Library>(state, &Invoice<Library>::texts, "3.33",
        [](auto& invoice, const auto& text) { Library::parse(invoice.result, text); });
}

template <class Library>
void printAmount(benchmark::State& state)
{
    Invoice<Library> invoice;
    typename Library::Text text;
    for (auto _ : state) {
        for (const auto& amount : invoice.amounts) {
            text = Library::print(amount);
            benchmark::DoNotOptimize(text);
        }
    }
    check<Library>(state, invoice.amounts.back(), "3.33");
}

#ifdef VX_BENCH_BOOST
#define VX_BENCH(work)                                                                                                 \
    BENCHMARK_TEMPLATE(work, Ours);                                                                                    \
    BENCHMARK_TEMPLATE(work, Boost);
#else
#define VX_BENCH(work) BENCHMARK_TEMPLATE(work, Ours);
#endif

VX_BENCH(sum)
VX_BENCH(tax)
VX_BENCH(quotient)
VX_BENCH(parseAmount)
VX_BENCH(printAmount)

#if defined __GLIBC__ && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
/// Of one small number: the object, and what it takes from the heap.
template <class Number>
void bytesOf(benchmark::State& state)
{
    constexpr int COUNT = 1000;
    std::vector<Number> numbers;
    for (auto _ : state) {
        numbers.clear();
        numbers.reserve(COUNT);
        const std::size_t before = mallinfo2().uordblks;
        for (int number = 1; number <= COUNT; ++number)
            numbers.emplace_back(number);
        state.counters["heap"] = static_cast<double>(mallinfo2().uordblks - before) / COUNT;
    }
    state.counters["object"] = sizeof(Number);
}
BENCHMARK_TEMPLATE(bytesOf, vx::math::BigInteger);
BENCHMARK_TEMPLATE(bytesOf, vx::math::BigDecimal);
#ifdef VX_BENCH_BOOST
BENCHMARK_TEMPLATE(bytesOf, boost::multiprecision::cpp_dec_float_50);
#endif
#endif

} // namespace
