// Runs a fuzz target without a fuzzer: every file of the corpus first, then mutations of them from a fixed seed,
// so that a failure comes again. Takes the flags of libFuzzer: -max_total_time=SECONDS and -runs=N end the
// mutations (10 seconds if neither is given), -seed=N varies them, all others are ignored. Folders and files are
// the corpus. A failing input is written to ./crash-replay before it runs if -keep_input=1 is given.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;
using Random = std::mt19937_64;

struct Options
{
    long long maxTotalTime = -1;
    long long runs = -1;
    unsigned long long seed = 1;
    bool keepInput = false;
    std::vector<std::filesystem::path> corpus;
};

void takeFlag(Options& options, std::string_view flag)
{
    const std::size_t equals = flag.find('=');
    if (equals == std::string_view::npos) return;
    const std::string_view name = flag.substr(1, equals - 1);
    const long long value = std::strtoll(flag.data() + equals + 1, nullptr, 10);
    if (name == "max_total_time") options.maxTotalTime = value;
    if (name == "runs") options.runs = value;
    if (name == "seed") options.seed = static_cast<unsigned long long>(value);
    if (name == "keep_input") options.keepInput = value != 0;
}

Options parse(int count, char** arguments)
{
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (!argument.empty() && argument.front() == '-') {
            takeFlag(options, argument);
        } else {
            options.corpus.emplace_back(argument);
        }
    }
    if (options.maxTotalTime < 0 && options.runs < 0) options.maxTotalTime = 10;
    return options;
}

Input load(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<Input> loadCorpus(const std::vector<std::filesystem::path>& places)
{
    std::vector<std::filesystem::path> files;
    for (const auto& place : places) {
        if (!std::filesystem::is_directory(place)) {
            files.push_back(place);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(place))
            if (entry.is_regular_file()) files.push_back(entry.path());
    }
    // Folders list their files in any order; the mutations must not depend on it.
    std::sort(files.begin(), files.end());
    std::vector<Input> corpus;
    for (const auto& file : files)
        corpus.push_back(load(file));
    return corpus;
}

std::size_t pick(Random& random, std::size_t count)
{
    return count == 0 ? 0 : static_cast<std::size_t>(random() % count);
}

void mutateOnce(Input& input, const Input& other, Random& random)
{
    const std::size_t at = pick(random, input.size());
    const std::size_t length = std::min(1 + pick(random, 16), input.size() - at);
    const auto here = input.begin() + static_cast<std::ptrdiff_t>(at);
    switch (random() % 7) {
        case 0:
            if (!input.empty()) *here = static_cast<uint8_t>(random());
            break;
        case 1:
            if (!input.empty()) *here = static_cast<uint8_t>(*here ^ (1U << random() % 8));
            break;
        case 2:
            input.insert(here, static_cast<uint8_t>(random()));
            break;
        case 3:
            input.erase(here, here + static_cast<std::ptrdiff_t>(length));
            break;
        case 4: {  // repeats a piece of itself
            const Input piece(here, here + static_cast<std::ptrdiff_t>(length));
            const auto place = static_cast<std::ptrdiff_t>(pick(random, input.size() + 1));
            input.insert(input.begin() + place, piece.begin(), piece.end());
            break;
        }
        case 5: {  // takes a piece of another input
            const std::size_t from = pick(random, other.size());
            const std::size_t size = std::min(1 + pick(random, 64), other.size() - from);
            const auto start = other.begin() + static_cast<std::ptrdiff_t>(from);
            input.insert(here, start, start + static_cast<std::ptrdiff_t>(size));
            break;
        }
        case 6:
            if (random() % 8 == 0) input.resize(at);
            break;
    }
}

void run(const Options& options, const Input& input)
{
    if (options.keepInput) {
        std::ofstream stream("crash-replay", std::ios::binary);
        stream.write(reinterpret_cast<const char*>(input.data()), static_cast<std::streamsize>(input.size()));
    }
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int count, char** arguments)
{
    const Options options = parse(count, arguments);
    std::vector<Input> corpus = loadCorpus(options.corpus);
    for (const Input& input : corpus)
        run(options, input);
    const std::size_t replayed = corpus.size();
    if (corpus.empty()) corpus.emplace_back();

    constexpr std::size_t maxSize = 64 << 10;
    Random random(options.seed);
    const auto end = Clock::now() + std::chrono::seconds(std::max(options.maxTotalTime, 0LL));
    long long mutated = 0;
    while ((options.runs < 0 || mutated < options.runs) && (options.maxTotalTime < 0 || Clock::now() < end)) {
        Input input = corpus[pick(random, corpus.size())];
        for (std::size_t steps = 1 + pick(random, 6); steps > 0; --steps)
            mutateOnce(input, corpus[pick(random, corpus.size())], random);
        if (input.size() > maxSize) input.resize(maxSize);
        run(options, input);
        ++mutated;
    }
    std::printf("%zu corpus files and %lld mutations of them ran.\n", replayed, mutated);
    return 0;
}
