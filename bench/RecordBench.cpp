/// Binary records: typed access to a ByteBuffer beside plain loads and stores, and the streams of numbers and of
/// alphanumeric text beside plain loops over the same streams. Where Qt is installed, its stream of numbers does the same.

#include "vx/Reference.h"
#include "vx/io/AlphaNumInputStream.h"
#include "vx/io/AlphaNumOutputStream.h"
#include "vx/io/BufferedInputStream.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/DataInputStream.h"
#include "vx/io/DataOutputStream.h"

#ifdef VX_BENCH_QT
#include <QBuffer>
#include <QByteArray>
#include <QDataStream>
#endif

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace vx;
using namespace vx::io;

namespace {

constexpr int COUNT = 4096;
constexpr int SIZE = 4 * COUNT;

std::vector<signed char> someBytes()
{
    std::vector<signed char> bytes(SIZE);
    std::uint32_t state = 1;
    for (signed char& byte : bytes)
        byte = static_cast<signed char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

struct Ours {
    explicit Ours(std::vector<signed char>& bytes)
        : m_buffer(bytes.data(), SIZE, VX_ENDIAN_BIG, false)
    {
    }
    void store(unsigned index, std::int32_t value) { m_buffer.putInt32(index, value); }
    std::int32_t load(unsigned index) const { return m_buffer.getInt32(index); }

    static void write(OutputStream* sink)
    {
        DataOutputStream out(sink);
        for (std::int32_t value = 0; value < COUNT; ++value)
            out.writeInt32(value);
    }
    static std::uint32_t read(InputStream* source)
    {
        DataInputStream in(source);
        std::uint32_t sum = 0;
        for (int index = 0; index < COUNT; ++index)
            sum += static_cast<std::uint32_t>(in.readInt32());
        return sum;
    }
    static void encode(OutputStream* sink, const std::vector<signed char>& bytes)
    {
        AlphaNumOutputStream out(sink);
        out.write(bytes.data(), SIZE);
        out.flush();
    }
    static std::int32_t decode(InputStream* source, signed char* target)
    {
        return AlphaNumInputStream(source).read(target, SIZE);
    }

    ByteBuffer m_buffer;
};

constexpr char ALPHABET[] = "ABCDEFGHJKLMNPQRSTUVWXYZ23456789";

/// What one writes by hand.
struct Plain {
    explicit Plain(std::vector<signed char>& bytes)
        : m_bytes(bytes.data())
    {
    }
    void store(unsigned index, std::int32_t value)
    {
        const std::uint32_t swapped = __builtin_bswap32(static_cast<std::uint32_t>(value));
        std::memcpy(m_bytes + index, &swapped, sizeof swapped);
    }
    std::int32_t load(unsigned index) const
    {
        std::uint32_t swapped;
        std::memcpy(&swapped, m_bytes + index, sizeof swapped);
        return static_cast<std::int32_t>(__builtin_bswap32(swapped));
    }

    static void write(OutputStream* sink)
    {
        for (std::uint32_t value = 0; value < COUNT; ++value) {
            const signed char bytes[] = {static_cast<signed char>(value >> 24), static_cast<signed char>(value >> 16),
                static_cast<signed char>(value >> 8), static_cast<signed char>(value)};
            sink->write(bytes, 4);
        }
    }
    static std::uint32_t read(InputStream* source)
    {
        std::uint32_t sum = 0;
        for (int index = 0; index < COUNT; ++index) {
            std::uint32_t value = 0;
            for (int byte = 0; byte < 4; ++byte)
                value = value << 8 | static_cast<std::uint32_t>(source->read());
            sum += value;
        }
        return sum;
    }
    static void encode(OutputStream* sink, const std::vector<signed char>& bytes)
    {
        std::uint32_t bits = 0;
        int count = 0;
        for (const signed char byte : bytes) {
            bits = bits << 8 | static_cast<std::uint8_t>(byte);
            for (count += 8; count >= 5; count -= 5)
                sink->write(static_cast<signed char>(ALPHABET[bits >> (count - 5) & 31]));
        }
        if (count > 0)
            sink->write(static_cast<signed char>(ALPHABET[bits << (5 - count) & 31]));
    }
    static std::int32_t decode(InputStream* source, signed char* target)
    {
        std::array<std::uint8_t, 256> values {};
        for (std::uint8_t value = 0; value < 32; ++value)
            values[static_cast<std::uint8_t>(ALPHABET[value])] = value;
        std::uint32_t bits = 0;
        int count = 0;
        std::int32_t done = 0;
        while (done < SIZE) {
            bits = bits << 5 | values[static_cast<std::uint8_t>(source->read())];
            count += 5;
            if (count >= 8) {
                count -= 8;
                target[done++] = static_cast<signed char>(bits >> count);
            }
        }
        return done;
    }

    signed char* m_bytes;
};

/// What one writes by hand for an order that is known at run time, and for a block that may be read-only.
class Checked {
public:
    explicit Checked(std::vector<signed char>& bytes)
        : m_bytes(bytes.data())
    {
        benchmark::DoNotOptimize(*this); // otherwise the compiler knows both settings
    }
    void store(unsigned index, std::int32_t value)
    {
        if (m_isReadOnly)
            throw ReadOnlyException();
        const std::uint32_t bits = ordered(static_cast<std::uint32_t>(value));
        std::memcpy(m_bytes + index, &bits, sizeof bits);
    }
    std::int32_t load(unsigned index) const
    {
        std::uint32_t bits;
        std::memcpy(&bits, m_bytes + index, sizeof bits);
        return static_cast<std::int32_t>(ordered(bits));
    }

private:
    std::uint32_t ordered(std::uint32_t bits) const { return m_isBig ? __builtin_bswap32(bits) : bits; }

    signed char* m_bytes;
    bool m_isBig = true;
    bool m_isReadOnly = false;
};

template <class Way>
void storeInt32(benchmark::State& state)
{
    std::vector<signed char> bytes(SIZE);
    Way way(bytes);
    for (auto _ : state) {
        for (unsigned index = 0; index < SIZE; index += 4)
            way.store(index, static_cast<std::int32_t>(index));
        benchmark::ClobberMemory();
    }
    if (bytes[SIZE - 1] != static_cast<signed char>(SIZE - 4))
        state.SkipWithError("other bytes");
    state.SetItemsProcessed(state.iterations() * COUNT);
}
BENCHMARK(storeInt32<Ours>);
BENCHMARK(storeInt32<Checked>);
BENCHMARK(storeInt32<Plain>);

template <class Way>
void loadInt32(benchmark::State& state)
{
    std::vector<signed char> bytes = someBytes();
    const Way way(bytes);
    for (auto _ : state) {
        std::uint32_t sum = 0;
        for (unsigned index = 0; index < SIZE; index += 4)
            sum += static_cast<std::uint32_t>(way.load(index));
        benchmark::DoNotOptimize(sum);
        benchmark::ClobberMemory();
    }
    if (way.load(0) >> 24 != bytes[0])
        state.SkipWithError("another number");
    state.SetItemsProcessed(state.iterations() * COUNT);
}
BENCHMARK(loadInt32<Ours>);
BENCHMARK(loadInt32<Checked>);
BENCHMARK(loadInt32<Plain>);

template <class Way>
void writeNumbers(benchmark::State& state)
{
    const Reference<ByteArrayOutputStream> sink(new ByteArrayOutputStream(SIZE));
    for (auto _ : state) {
        sink->reset();
        Way::write(sink.get());
    }
    if (sink->getSize() != SIZE || sink->getBytes()[SIZE - 1] != static_cast<signed char>(COUNT - 1))
        state.SkipWithError("other bytes");
    state.SetBytesProcessed(state.iterations() * SIZE);
}
BENCHMARK(writeNumbers<Ours>);
BENCHMARK(writeNumbers<Plain>);

#ifdef VX_BENCH_QT
void writeNumbersQt(benchmark::State& state)
{
    QByteArray bytes;
    bytes.reserve(SIZE);
    QBuffer sink(&bytes);
    for (auto _ : state) {
        sink.open(QIODevice::WriteOnly);
        QDataStream out(&sink); // big-endian by default
        for (qint32 value = 0; value < COUNT; ++value)
            out << value;
        sink.close();
    }
    if (bytes.size() != SIZE || bytes[SIZE - 1] != static_cast<char>(COUNT - 1))
        state.SkipWithError("other bytes");
    state.SetBytesProcessed(state.iterations() * SIZE);
}
BENCHMARK(writeNumbersQt);
#endif

/// The bytes in a buffer, as they come from a file.
Reference<InputStream> buffered(const signed char* bytes, std::int32_t size)
{
    return new BufferedInputStream(new ByteArrayInputStream(bytes, size), SIZE);
}

std::uint32_t sumOf(std::vector<signed char>& bytes)
{
    const Plain way(bytes);
    std::uint32_t sum = 0;
    for (unsigned index = 0; index < SIZE; index += 4)
        sum += static_cast<std::uint32_t>(way.load(index));
    return sum;
}

template <class Way>
void readNumbers(benchmark::State& state)
{
    std::vector<signed char> bytes = someBytes();
    const std::uint32_t expected = sumOf(bytes);
    for (auto _ : state) {
        if (Way::read(buffered(bytes.data(), SIZE).get()) != expected)
            state.SkipWithError("another sum");
    }
    state.SetBytesProcessed(state.iterations() * SIZE);
}
BENCHMARK(readNumbers<Ours>);
BENCHMARK(readNumbers<Plain>);

#ifdef VX_BENCH_QT
void readNumbersQt(benchmark::State& state)
{
    std::vector<signed char> bytes = someBytes();
    const std::uint32_t expected = sumOf(bytes);
    const QByteArray source = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), SIZE);
    for (auto _ : state) {
        QDataStream in(source); // Qt makes a buffer object for the bytes
        std::uint32_t sum = 0;
        for (int index = 0; index < COUNT; ++index) {
            qint32 value = 0;
            in >> value;
            sum += static_cast<std::uint32_t>(value);
        }
        if (sum != expected)
            state.SkipWithError("another sum");
    }
    state.SetBytesProcessed(state.iterations() * SIZE);
}
BENCHMARK(readNumbersQt);
#endif

template <class Way>
void encodeAlphaNum(benchmark::State& state)
{
    const std::vector<signed char> bytes = someBytes();
    const Reference<ByteArrayOutputStream> expected(new ByteArrayOutputStream);
    Plain::encode(expected.get(), bytes);
    const Reference<ByteArrayOutputStream> sink(new ByteArrayOutputStream(2 * SIZE));
    for (auto _ : state) {
        sink->reset();
        Way::encode(sink.get(), bytes);
    }
    if (sink->getSize() != expected->getSize()
        || std::memcmp(sink->getBytes(), expected->getBytes(), static_cast<std::size_t>(sink->getSize())) != 0)
        state.SkipWithError("another text");
    state.SetBytesProcessed(state.iterations() * SIZE);
}
BENCHMARK(encodeAlphaNum<Ours>);
BENCHMARK(encodeAlphaNum<Plain>);

template <class Way>
void decodeAlphaNum(benchmark::State& state)
{
    const std::vector<signed char> bytes = someBytes();
    const Reference<ByteArrayOutputStream> text(new ByteArrayOutputStream);
    Plain::encode(text.get(), bytes);
    std::vector<signed char> target(SIZE);
    for (auto _ : state) {
        if (Way::decode(buffered(text->getBytes(), text->getSize()).get(), target.data()) != SIZE)
            state.SkipWithError("short read");
    }
    if (target != bytes)
        state.SkipWithError("other bytes");
    state.SetBytesProcessed(state.iterations() * SIZE);
}
BENCHMARK(decodeAlphaNum<Ours>);
BENCHMARK(decodeAlphaNum<Plain>);

} // namespace
