#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "runner_fixture.h"
#include "support/paths.h"

// Every tag that another program sees in the corpus's JPEG files with EXIF, before and after.

namespace tessarine::tests {
namespace {

using nlohmann::json;

constexpr const char* exiftool = "/usr/bin/exiftool";

/// Tags with their groups, of a file; several values of one tag on end.
std::map<std::string, std::string> tagsOf(const std::string& path, const std::string& scratch) {
    const Finished end =
        runProgram({exiftool, "-json", "-a", "-u", "-G1", "-s", "-n", "-b", "-q", "-q", "-EXIF:all",
                    "-IPTC:all", "-XMP:all", "-ICC_Profile:all", "-MakerNotes:all", path},
                   scratch);
    std::map<std::string, std::string> tags;
    const json read = json::parse(end.out.empty() ? "[{}]" : end.out);
    for (const auto& [name, value] : read.at(0).items())
        if (name != "SourceFile") tags[name] = value.dump();
    return tags;
}

/// Why a tag may differ; empty where it may not.
std::string reasonFor(const std::string& file, const std::string& tag) {
    if (tag.starts_with("IFD1:")) return "the thumbnail of what was read";
    static const std::map<std::string, std::string> reasons{
        {"ExifIFD:ExifImageWidth", "is the output's"},
        {"ExifIFD:ExifImageHeight", "is the output's"},
        {"XMP-tiff:ImageWidth", "is the output's"},
        {"XMP-tiff:ImageHeight", "is the output's"},
        {"IFD0:Orientation", "the picture was turned upright"},
        {"XMP-x:XMPToolkit", "names who wrote the packet"},
    };
    if (const auto found = reasons.find(tag); found != reasons.end()) return found->second;
    if (file == "jpegdecoder_tower_progressive.jpg" && tag.starts_with("XMP-"))
        return "a packet that says some properties twice, which XMP forbids";
    if (file == "tika_testJPEG_GEO.jpg" && tag.starts_with("IPTC2:"))
        return "the same block of IPTC for the second time";
    return {};
}

TEST(MetadataOfTheCorpus, IsTheSameBeforeAndAfterButForNamedTags) {
    const fs::path corpus = sharedFolder() / "corpus";
    if (!fs::is_directory(corpus)) GTEST_SKIP() << "the sample files of other programs are absent";
    if (!fs::exists(exiftool)) GTEST_SKIP() << "exiftool is not installed";
    const ScratchFolder scratch;
    int files = 0, compared = 0;
    std::set<std::string> differing;
    for (const auto& entry : fs::recursive_directory_iterator(corpus)) {
        const std::string extension = entry.path().extension();
        if (extension != ".jpg" && extension != ".jpeg") continue;
        if (entry.path().parent_path().filename() == "malformed") continue;
        const auto before = tagsOf(entry.path(), scratch.path().string());
        const bool hasExif = std::any_of(before.begin(), before.end(), [](const auto& tag) {
            return tag.first.starts_with("IFD") || tag.first.starts_with("ExifIFD");
        });
        if (!hasExif) continue;
        ++files;
        const std::string file = entry.path().filename();
        for (const bool turns : {false, true}) {
            std::vector<std::string> words{TESSARINE_BATCH, "--quiet",         "--overwrite",
                                           "--to",          scratch.path(),    "--format",
                                           "jpg-good",      "--keep-metadata", entry.path()};
            if (turns) words.insert(words.end() - 1, "--auto-orient");
            ASSERT_EQ(runProgram(words, scratch.path().string()).status, 0) << file;
            const auto after = tagsOf(scratch / "Sample1.jpg", scratch.path().string());
            std::set<std::string> names;
            for (const auto& tags : {before, after})
                for (const auto& [name, value] : tags)
                    names.insert(name);
            for (const std::string& name : names) {
                ++compared;
                const std::string was = before.count(name) > 0 ? before.at(name) : "nothing";
                const std::string is = after.count(name) > 0 ? after.at(name) : "nothing";
                if (was == is) continue;
                EXPECT_NE(reasonFor(file, name), "")
                    << file << ": " << name << " was " << was << " and is " << is;
                if (!turns) {
                    EXPECT_NE(name, "IFD0:Orientation") << file;
                }
                differing.insert(name);
            }
        }
    }
    EXPECT_GE(files, 9);
    EXPECT_GT(compared, 500);
    EXPECT_TRUE(differing.count("IFD0:Orientation") != 0);
    RecordProperty("files", files);
    RecordProperty("compared", compared);
}

}  // namespace
}  // namespace tessarine::tests
