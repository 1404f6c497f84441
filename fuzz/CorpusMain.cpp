// Runs a fuzz target over the files of a folder and over mutations of them, without a fuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<std::uint8_t>;

constexpr std::size_t LONGEST = 4096;

void mutate(Input& input, const Input& other, std::mt19937& random)
{
    const auto place = [&](const Input& in) { return static_cast<std::ptrdiff_t>(random() % (in.size() + 1)); };
    const std::ptrdiff_t at = place(input);
    const std::ptrdiff_t from = place(other);
    const std::ptrdiff_t to = std::min<std::ptrdiff_t>(
        from + static_cast<std::ptrdiff_t>(random() % 64), static_cast<std::ptrdiff_t>(other.size()));
    switch (random() % 4) {
    case 0:
        input.insert(input.begin() + at, static_cast<std::uint8_t>(random()));
        break;
    case 1:
        input.insert(input.begin() + at, other.begin() + from, other.begin() + to);
        break;
    case 2:
        input.erase(
            input.begin() + at, input.begin() + std::min(at + to - from, static_cast<std::ptrdiff_t>(input.size())));
        break;
    default:
        if (!input.empty())
            input[static_cast<std::size_t>(at) % input.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
    }
    input.resize(std::min(input.size(), LONGEST));
}

} // namespace

int main(int argc, char** argv)
{
    constexpr unsigned SEED = 20261125;
    constexpr unsigned ROUNDS = 10'000;
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<Input> corpus;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    if (corpus.empty()) {
        std::fprintf(stderr, "%s holds nothing\n", argv[1]);
        return 2;
    }
    for (const Input& input : corpus)
        LLVMFuzzerTestOneInput(input.data(), input.size());
    std::mt19937 random(SEED);
    for (unsigned round = 0; round < ROUNDS; ++round) {
        Input input = corpus[random() % corpus.size()];
        for (unsigned steps = 1 + random() % 8; steps > 0; --steps)
            mutate(input, corpus[random() % corpus.size()], random);
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("%zu files and %u mutations of them\n", corpus.size(), ROUNDS);
    return 0;
}
