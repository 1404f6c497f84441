/// Reading 64 MiB of UTF-8 line by line into UTF-16, beside `std::getline` with a conversion.

#include "vx/String.h"
#include "vx/io/BufferedReader.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/InputStreamReader.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>

#ifdef VX_BENCH_ICU
#include <unicode/ustring.h>
#endif

using namespace vx;

namespace {

constexpr std::size_t FILE_SIZE = 64 * 1024 * 1024;
constexpr int BUFFER_SIZE = 64 * 1024;

/// What the lines look like.
constexpr std::string_view PATTERNS[] = {
    "2026-11-24 20:57:01.123 [worker-7] INFO  request 4711 took 12 ms, 8192 bytes from cache\n",
    "Die Brücke über den Fluss wurde größer, schöner und fürchterlich teuer: 1.250.000 €.\n",
    "Ёжик нёс в туман узелок с вареньем и считал звёзды: раз, два, тысяча.\n",
    "老船长把地图折好，放进茶叶罐里，说：“明年春天再出发。”\n",
    "ok\n",
};
constexpr const char* NAMES[] = {"log", "German", "Russian", "Chinese", "short"};

/// A file of its own for each pattern, gone with the program.
class Files {
public:
    Files()
    {
        std::string path = (std::filesystem::temp_directory_path() / "line-bench-XXXXXX").string();
        if (::mkdtemp(path.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        m_folder = path;
    }
    ~Files() { std::filesystem::remove_all(m_folder); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    std::string get(std::int64_t pattern)
    {
        const std::filesystem::path path = m_folder / std::to_string(pattern);
        if (!std::filesystem::exists(path)) {
            std::string block;
            while (block.size() < BUFFER_SIZE)
                block += PATTERNS[pattern];
            std::ofstream file(path, std::ios::binary);
            for (std::size_t written = 0; written < FILE_SIZE; written += block.size())
                file << block;
        }
        return path.string();
    }

private:
    std::filesystem::path m_folder;
};

/// What is read: the same for every way.
struct Sums {
    std::int64_t lines = 0;
    std::int64_t units = 0;
    std::uint64_t mix = 0;

    void add(std::u16string_view line)
    {
        ++lines;
        units += static_cast<std::int64_t>(line.size());
        mix = mix * 31 + line[line.size() / 2] + line.back();
    }
    bool operator==(const Sums&) const = default;
};

Sums withReadLine(const std::string& path)
{
    const Reference<io::BufferedReader> reader(new io::BufferedReader(
        new io::InputStreamReader(new io::FileInputStream(String(path)), u"UTF-8", BUFFER_SIZE), BUFFER_SIZE));
    Sums sums;
    for (String line; reader->readLine(line) >= 0;)
        sums.add(line.view());
    return sums;
}

template <class Convert>
Sums withGetline(const std::string& path, Convert&& convert)
{
    std::string buffer(BUFFER_SIZE, '\0');
    std::ifstream file;
    file.rdbuf()->pubsetbuf(buffer.data(), BUFFER_SIZE);
    file.open(path, std::ios::binary);
    Sums sums;
    std::u16string text;
    for (std::string line; std::getline(file, line);) {
        convert(line, text);
        sums.add(text);
    }
    return sums;
}

/// The loop that a programmer writes by hand, without looking at what is malformed.
void convertByHand(const std::string& line, std::u16string& text)
{
    text.resize(line.size());
    char16_t* out = text.data();
    const auto* in = reinterpret_cast<const unsigned char*>(line.data());
    const auto* const end = in + line.size();
    while (in < end) {
        if (*in < 0x80) {
            *out++ = *in++;
        } else if (*in < 0xE0) {
            *out++ = static_cast<char16_t>((in[0] & 0x1F) << 6 | (in[1] & 0x3F));
            in += 2;
        } else if (*in < 0xF0) {
            *out++ = static_cast<char16_t>((in[0] & 0x0F) << 12 | (in[1] & 0x3F) << 6 | (in[2] & 0x3F));
            in += 3;
        } else {
            const unsigned value
                = (in[0] & 0x07U) << 18 | (in[1] & 0x3FU) << 12 | (in[2] & 0x3FU) << 6 | (in[3] & 0x3FU);
            *out++ = static_cast<char16_t>(0xD7C0 + (value >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (value & 0x3FF));
            in += 4;
        }
    }
    text.resize(static_cast<std::size_t>(out - text.data()));
}

#ifdef VX_BENCH_ICU
void convertWithIcu(const std::string& line, std::u16string& text)
{
    text.resize(line.size());
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    ::u_strFromUTF8(text.data(), static_cast<std::int32_t>(text.size()), &length, line.data(),
        static_cast<std::int32_t>(line.size()), &error);
    text.resize(static_cast<std::size_t>(length));
}
#endif

Sums byHand(const std::string& path)
{
    return withGetline(path, convertByHand);
}

template <Sums (*read)(const std::string&)>
void lines(benchmark::State& state)
{
    static Files files;
    const std::string path = files.get(state.range(0));
    const Sums expected = byHand(path);
    for (auto _ : state) {
        if (read(path) != expected)
            state.SkipWithError("other lines");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(path)));
    state.SetLabel(NAMES[state.range(0)]);
}
BENCHMARK(lines<withReadLine>)->Name("readLine")->DenseRange(0, 4)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(lines<byHand>)->Name("getlineByHand")->DenseRange(0, 4)->Unit(benchmark::kMillisecond)->UseRealTime();
#ifdef VX_BENCH_ICU
Sums withIcu(const std::string& path)
{
    return withGetline(path, convertWithIcu);
}
BENCHMARK(lines<withIcu>)->Name("getlineWithIcu")->DenseRange(0, 4)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

} // namespace
