#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "sample_files.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

fs::path corpusFolder() { return sharedFolder() / "corpus"; }

std::string extensionOf(const fs::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

/// Files of another format under the extension, as the list of sources says.
std::set<std::string> foreignFiles() {
    std::set<std::string> names;
    std::ifstream list(corpusFolder() / "SOURCES.md");
    for (std::string line; std::getline(list, line);) {
        if (line.find("| foreign:") == std::string::npos) continue;
        const size_t end = line.find(" |", 2);
        names.insert(line.substr(2, end - 2));
    }
    return names;
}

/// A picture as another program reads it.
struct Judged {
    int32_t width = 0;
    int32_t height = 0;
    Colours colours;
};

/// Reads a binary portable bitmap, greymap or pixmap of up to 16 bits a sample.
std::optional<Judged> readPortable(const std::string& bytes) {
    if (bytes.size() < 8 || bytes[0] != 'P' || bytes[1] < '4' || bytes[1] > '6') return {};
    const bool isBilevel = bytes[1] == '4';
    size_t place = 2;
    std::array<uint32_t, 3> numbers{0, 0, 1};
    for (size_t i = 0; i < (isBilevel ? 2 : 3); ++i) {
        while (place < bytes.size() && (std::isspace(bytes[place]) || bytes[place] == '#')) {
            if (bytes[place] == '#') place = bytes.find('\n', place);
            ++place;
        }
        numbers[i] = 0;
        while (place < bytes.size() && std::isdigit(bytes[place]))
            numbers[i] = numbers[i] * 10 + static_cast<uint32_t>(bytes[place++] - '0');
    }
    ++place;
    if (numbers[0] == 0 || numbers[1] == 0 || numbers[2] == 0) return {};
    Judged judged{static_cast<int32_t>(numbers[0]), static_cast<int32_t>(numbers[1]), {}};
    const size_t width = numbers[0];
    const auto byte = [&](size_t i) {
        return i < bytes.size() ? static_cast<uint8_t>(bytes[i]) : uint8_t{0};
    };
    const auto level = [&](uint32_t sample) {
        return (sample * 255 + numbers[2] / 2) / numbers[2];
    };
    for (size_t y = 0; y < numbers[1]; ++y)
        for (size_t x = 0; x < width; ++x) {
            if (isBilevel) {
                const bool isSet = byte(place + y * ((width + 7) / 8) + x / 8) >> (7 - x % 8) & 1;
                judged.colours.push_back(isSet ? black : white);
                continue;
            }
            const size_t samples = bytes[1] == '5' ? 1 : 3;
            uint32_t colour = 0;
            for (size_t c = 0; c < 3; ++c) {
                const size_t sample = (y * width + x) * samples + (samples == 1 ? 0 : c);
                const uint32_t value = numbers[2] < 256 ? byte(place + sample)
                                                        : uint32_t{byte(place + 2 * sample)} << 8 |
                                                              byte(place + 2 * sample + 1);
                colour = colour << 8 | level(value);
            }
            judged.colours.push_back(colour);
        }
    return judged;
}

std::string outputOf(const std::string& command) {
    std::string output;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    std::array<char, 65536> part;
    while (const size_t count = std::fread(part.data(), 1, part.size(), pipe.get()))
        output.append(part.data(), count);
    return output;
}

/// The programs that read an extension independently, each a command with % for the file. They
/// lie too, each about other files, so a picture has to agree with one of them.
const std::map<std::string, std::vector<std::string>>& judges() {
    static const std::string im = " -alpha off -depth 16 ppm:-";
    static const std::vector<std::string> targa{"tgatoppm %", "convert tga:%" + im};
    static const std::vector<std::string> sgi{"convert sgi:%" + im, "sgitopnm %"};
    static const std::vector<std::string> tiff{"convert 'tiff:%[0]'" + im, "tifftopnm %"};
    static const std::vector<std::string> iff{"ilbmtoppm %", "convert ilbm:%" + im};
    static const std::vector<std::string> jpeg{"convert jpeg:%" + im, "jpegtopnm -dct=int %"};
    static const std::vector<std::string> psd{"convert 'psd:%[0]'" + im};
    static const std::map<std::string, std::vector<std::string>> all{
        {"bmp", {"convert bmp:%" + im, "bmptopnm %"}},
        {"dib", {"convert dib:%" + im}},
        {"gif",
         {"convert 'gif:%[0]' -background white -coalesce -flatten -depth 8 ppm:-",
          "giftopnm -image=1 %"}},
        {"png", {"convert png:%" + im, "pngtopnm -gamma 2.2 %"}},
        {"jpg", jpeg},
        {"jpeg", jpeg},
        {"jng", {"convert jng:%" + im}},
        {"mng", {"convert 'mng:%[0]'" + im}},
        {"tif", tiff},
        {"tiff", tiff},
        {"psd", psd},
        {"pdd", psd},
        {"pcx", {"pcxtoppm %", "convert pcx:%" + im}},
        {"dcx", {"convert 'dcx:%[0]'" + im}},
        {"ras", {"rasttopnm %", "convert sun:%" + im}},
        {"iff", iff},
        {"lbm", iff},
        {"pbm", {"convert pbm:%" + im}},
        {"pgm", {"convert pgm:%" + im}},
        {"ppm", {"convert ppm:%" + im}},
        {"wbmp", {"wbmptopbm %"}},
        {"xpm", {"convert xpm:% -background white -flatten -depth 8 ppm:-", "xpmtoppm %"}},
        {"dds", {"convert 'dds:%[0]'" + im}},
        {"tga", targa},
        {"icb", targa},
        {"vda", targa},
        {"vst", targa},
        {"targa", targa},
        {"sgi", sgi},
        {"bw", sgi},
        {"rgb", sgi},
        {"rgba", sgi},
    };
    return all;
}

std::vector<Judged> judge(const fs::path& path) {
    std::vector<Judged> judged;
    const auto found = judges().find(extensionOf(path));
    if (found == judges().end()) return judged;
    for (std::string command : found->second) {
        command.replace(command.find('%'), 1, path.string());
        if (auto picture = readPortable(outputOf(command + " 2>/dev/null")))
            judged.push_back(std::move(*picture));
    }
    return judged;
}

/// The largest difference of a channel; nothing where the sizes differ.
std::optional<uint32_t> differenceOf(const Loaded& loaded, const Judged& judged) {
    if (loaded.width != judged.width || loaded.height != judged.height) return std::nullopt;
    uint32_t most = 0;
    for (size_t i = 0; i < loaded.colours.size(); ++i)
        for (const uint32_t shift : {0u, 8u, 16u}) {
            const auto a = static_cast<int>(loaded.colours[i] >> shift & 255);
            const auto b = static_cast<int>(judged.colours[i] >> shift & 255);
            most = std::max(most, static_cast<uint32_t>(std::abs(a - b)));
        }
    return most;
}

/// Files whose formats hold no exact 8-bit colours, or whose judges round: the largest difference
/// that is no fault.
struct Tolerance {
    const char* name;
    uint32_t most;
    const char* reason;
};
constexpr Tolerance tolerances[] = {
#include "corpus_tolerances.inc"
};

/// Files that are of the format and are not read; also listed in docs/formats.md.
struct Unread {
    const char* name;
    const char* reason;
};
constexpr Unread unread[] = {
#include "corpus_unread.inc"
};

/// Files that no program here can judge, or that all of them misread: they open at this size, and
/// what they show was looked at. A size of 0 is told by nothing but the fonts.
struct Unjudged {
    const char* name;
    int32_t width;
    int32_t height;
    const char* reason;
};
constexpr Unjudged unjudged[] = {
#include "corpus_unjudged.inc"
};

template <class Entries>
auto find(const Entries& entries, const std::string& name) {
    return std::find_if(std::begin(entries), std::end(entries),
                        [&](const auto& entry) { return entry.name == name; });
}

TEST(Corpus, EveryPictureIsReadAsOtherProgramsReadIt) {
    if (!fs::exists(corpusFolder())) GTEST_SKIP() << "the sample files are not here";
    if (std::system("command -v convert pcxtoppm >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "the programs that judge pictures are not installed";
    const std::set<std::string> foreign = foreignFiles();
    EXPECT_GT(foreign.size(), 0u);
    size_t compared = 0;
    size_t alone = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(corpusFolder())) {
        const fs::path& path = entry.path();
        const std::string folder = path.parent_path().filename();
        const std::string name = path.filename();
        if (!entry.is_regular_file() || folder == "malformed" || folder == "photos" ||
            folder == "corpus")
            continue;
        SCOPED_TRACE(folder + "/" + name);
        const Loaded loaded = loadFile(path, extensionOf(path));
        if (foreign.contains(name) || find(unread, name) != std::end(unread)) {
            EXPECT_FALSE(loaded.isThere);
            continue;
        }
        EXPECT_TRUE(loaded.isThere);
        if (!loaded.isThere) continue;
        if (const auto alike = find(unjudged, name); alike != std::end(unjudged)) {
            EXPECT_TRUE(loaded.width > 0 && loaded.height > 0);
            if (alike->width > 0) {
                EXPECT_EQ(loaded.width, alike->width);
                EXPECT_EQ(loaded.height, alike->height);
            }
            ++alone;
            continue;
        }
        const auto tolerance = find(tolerances, name);
        const uint32_t most = tolerance == std::end(tolerances) ? 0 : tolerance->most;
        std::optional<uint32_t> best;
        for (const Judged& judged : judge(path)) {
            const std::optional<uint32_t> difference = differenceOf(loaded, judged);
            if (difference) best = std::min(best.value_or(256), *difference);
        }
        EXPECT_TRUE(best.has_value()) << "no judge gives " << loaded.width << "x" << loaded.height;
        EXPECT_LE(best.value_or(0), most);
        ++compared;
    }
    std::printf("%zu pictures compared, %zu without a judge\n", compared, alone);
    EXPECT_GT(compared, 250u);
}

}  // namespace
}  // namespace tessarine::tests
