// Runs a fuzzer as a test: replay_NAME FOLDER [MUTANTS]. Every file of the folder is an input, and
// so are as many mutants of them as are asked for, the same ones each time. It ends as the fuzzer
// does: with status 0, or not at all well. Then the input in hand stands in the file that the first
// line names.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "expect.h"
#include "scratch.h"

namespace {

using InputBytes = std::vector<uint8_t>;

/// Longer than any record or header of the files that are parsed, short enough to be quick.
constexpr size_t longestMutant = 8192;

class Mutator {
  public:
    explicit Mutator(const std::vector<InputBytes>& seeds) : seeds_(seeds) {}

    InputBytes next() {
        InputBytes bytes = anySeed();
        for (int changes = 1 << below(4); changes > 0; --changes)
            change(bytes);
        if (bytes.size() > longestMutant) bytes.resize(longestMutant);
        return bytes;
    }

  private:
    size_t below(size_t count) { return count == 0 ? 0 : random_() % count; }
    const InputBytes& anySeed() { return seeds_[below(seeds_.size())]; }

    void change(InputBytes& bytes) {
        if (bytes.empty()) bytes.push_back(0);
        const size_t at = below(bytes.size());
        const auto place = bytes.begin() + static_cast<ptrdiff_t>(at);
        switch (below(7)) {
            case 0:
                bytes[at] ^= static_cast<uint8_t>(1U << below(8));
                break;
            case 1:
                bytes[at] = static_cast<uint8_t>(random_());
                break;
            case 2: {  // a number at the end of some range, of one to four bytes
                const uint32_t ends[] = {0,      1,      0x7F,       0x80,       0xFF,      0x7FFF,
                                         0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
                const uint32_t end = ends[below(std::size(ends))];
                const size_t length = std::min(size_t{1} << below(3), bytes.size() - at);
                for (size_t i = 0; i < length; ++i)
                    bytes[at + i] = static_cast<uint8_t>(end >> 8 * i);
                break;
            }
            case 3:
                bytes.erase(place, place + static_cast<ptrdiff_t>(
                                               std::min(1 + below(8), bytes.size() - at)));
                break;
            case 4:
                bytes.insert(place, 1 + below(8), static_cast<uint8_t>(random_()));
                break;
            case 5:
                bytes.resize(at);
                break;
            default: {  // the head of one input and the tail of another
                const InputBytes& other = anySeed();
                const size_t from = below(other.size());
                bytes.resize(at);
                bytes.insert(bytes.end(), other.begin() + static_cast<ptrdiff_t>(from),
                             other.end());
            }
        }
    }

    const std::vector<InputBytes>& seeds_;
    std::mt19937 random_{20240229};
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [MUTANTS]\n", argv[0]);
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const long mutants = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 0;
    const std::string inHand = std::filesystem::absolute(argv[0]).string() + ".last-input";
    std::printf("the input in hand stands in %s\n", inHand.c_str());
    std::fflush(stdout);

    const auto run = [&inHand](const InputBytes& input) {
        writeAnew(inHand, {reinterpret_cast<const char*>(input.data()), input.size()});
        LLVMFuzzerTestOneInput(input.data(), input.size());
    };

    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fprintf(stderr, "%s holds no inputs\n", folder.c_str());
        return 1;
    }
    std::vector<InputBytes> seeds{{}};
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    for (const InputBytes& seed : seeds)
        run(seed);
    Mutator mutator(seeds);
    for (long i = 0; i < mutants; ++i)
        run(mutator.next());
    std::filesystem::remove(inHand);
    std::printf("%zu inputs and %ld mutants of them\n", seeds.size(), mutants);
    return 0;
}
