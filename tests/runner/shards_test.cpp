#include "runner/shards.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/refusal.h"

// Which pictures a share has, and how it is named.

namespace tessarine::tests {
namespace {

using Variables = std::map<std::string, std::string>;

Shard autoShard(const Variables& variables) {
    return shardOf("auto", [&](const char* name) -> const char* {
        const auto found = variables.find(name);
        return found == variables.end() ? nullptr : found->second.c_str();
    });
}

Shard shardOf(const std::string& text) {
    return tessarine::shardOf(text, [](const char*) { return nullptr; });
}

/// The words with which a share is refused; empty where it is not.
template <class Work>
std::string refusalOf(Work work) {
    try {
        work();
    } catch (const Refusal& refusal) {
        EXPECT_EQ(refusal.status(), ExitStatus::commandLine);
        return refusal.what();
    }
    return {};
}

std::string refusalOfAuto(const Variables& variables) {
    return refusalOf([&] { autoShard(variables); });
}

Variables slurm(int task, int first, int last, int step, int count) {
    return {{"SLURM_ARRAY_TASK_ID", std::to_string(task)},
            {"SLURM_ARRAY_TASK_MIN", std::to_string(first)},
            {"SLURM_ARRAY_TASK_MAX", std::to_string(last)},
            {"SLURM_ARRAY_TASK_STEP", std::to_string(step)},
            {"SLURM_ARRAY_TASK_COUNT", std::to_string(count)}};
}

TEST(Shards, EachPlaceBelongsToOneShareAndSharesRise) {
    for (const int32_t count : {1, 2, 3, 7, 8, 16, 100})
        for (const size_t pictures : {0U, 1U, 5U, 8U, 99U, 400U, 1003U}) {
            std::set<size_t> seen;
            size_t largest = 0;
            size_t smallest = pictures;
            for (int32_t index = 0; index < count; ++index) {
                const std::vector<size_t> places = Shard{index, count}.placesIn(pictures);
                for (size_t i = 0; i < places.size(); ++i) {
                    EXPECT_EQ(Shard::ownerOf(places[i], count), index);
                    EXPECT_TRUE(i == 0 || places[i - 1] < places[i]);
                    EXPECT_LT(places[i], pictures);
                    seen.insert(places[i]);
                }
                largest = std::max(largest, places.size());
                smallest = std::min(smallest, places.size());
            }
            EXPECT_EQ(seen.size(), pictures) << count;
            EXPECT_LE(largest - smallest, 1U) << count << " shares of " << pictures;
        }
}

TEST(Shards, ASharesPlacesDoNotHangOnHowManyPicturesFollow) {
    const std::vector<size_t> few = Shard{3, 8}.placesIn(100);
    const std::vector<size_t> many = Shard{3, 8}.placesIn(1000);
    ASSERT_LT(few.size(), many.size());
    EXPECT_EQ(std::vector<size_t>(many.begin(), many.begin() + static_cast<long>(few.size())), few);
}

TEST(Shards, SharesAreWhatTheyAlwaysWere) {
    // Tasks of one run may be done by different versions: these numbers must never change.
    EXPECT_EQ((Shard{0, 4}.placesIn(20)), (std::vector<size_t>{3, 7, 10, 12, 18}));
    EXPECT_EQ((Shard{2, 5}.placesIn(30)), (std::vector<size_t>{1, 9, 14, 15, 21, 26}));
}

TEST(Shards, WhereEverySecondPictureIsLargeEachShareHasItsPart) {
    for (const int32_t count : {2, 3, 4, 5, 8, 9, 64})
        for (const size_t period : {2U, 3U, 4U, 7U, 8U, 9U}) {
            const size_t pictures = 40000;
            for (int32_t index = 0; index < count; ++index) {
                const std::vector<size_t> places = Shard{index, count}.placesIn(pictures);
                size_t large = 0;
                for (const size_t place : places)
                    large += place % period == 0 ? 1 : 0;
                const double expected =
                    static_cast<double>(places.size()) / static_cast<double>(period);
                EXPECT_NEAR(static_cast<double>(large) / expected, 1.0, 0.35)
                    << index << "/" << count << ", period " << period;
            }
        }
}

TEST(Shards, AShareIsNamedByItsIndexFrom0AndTheirCount) {
    EXPECT_EQ(shardOf("0/1").index, 0);
    EXPECT_EQ(shardOf("7/8").index, 7);
    EXPECT_EQ(shardOf("7/8").count, 8);
    EXPECT_EQ(shardOf("7/8").text(), "7/8");
    for (const char* wrong : {"8/8", "1", "/", "1/", "/2", "-1/2", "0/0", "1/2/3", "a/b", "0x1/8",
                              "1 /2", "+1/2", "0/3000000000", "", "Auto", "0/8 "}) {
        const std::string words = refusalOf([&] { shardOf(wrong); });
        EXPECT_NE(words.find("--shard: '" + std::string(wrong) + "'"), std::string::npos) << words;
        EXPECT_NE(words.find("K from 0 to N-1"), std::string::npos) << words;
    }
}

TEST(Shards, AutoIsTheTaskOfASlurmArrayFromWhateverNumberInWhateverSteps) {
    EXPECT_EQ(autoShard(slurm(0, 0, 7, 1, 8)).text(), "0/8");
    EXPECT_EQ(autoShard(slurm(7, 0, 7, 1, 8)).text(), "7/8");
    EXPECT_EQ(autoShard(slurm(1, 1, 8, 1, 8)).text(), "0/8");
    EXPECT_EQ(autoShard(slurm(12, 4, 16, 4, 4)).text(), "2/4");
    EXPECT_EQ(autoShard(slurm(5, 5, 5, 1, 1)).text(), "0/1");
}

TEST(Shards, ASlurmArrayInUnevenStepsIsRefused) {
    // 1,5,6 has three tasks, of which none would have the second place.
    for (const Variables& uneven :
         {slurm(5, 1, 6, 1, 3), slurm(3, 0, 6, 4, 2), slurm(9, 0, 7, 1, 8), slurm(2, 0, 6, 4, 3)})
        EXPECT_NE(refusalOfAuto(uneven).find("even steps"), std::string::npos);
    Variables halfTold = slurm(0, 0, 7, 1, 8);
    halfTold.erase("SLURM_ARRAY_TASK_COUNT");
    EXPECT_NE(refusalOfAuto(halfTold).find("SLURM_ARRAY_TASK_COUNT is not set"), std::string::npos);
    Variables garbled = slurm(0, 0, 7, 1, 8);
    garbled["SLURM_ARRAY_TASK_STEP"] = "0";
    EXPECT_NE(refusalOfAuto(garbled).find("SLURM_ARRAY_TASK_STEP is '0'"), std::string::npos);
}

TEST(Shards, AutoIsTheIndexOfAKubernetesJobWhoseCountTheManifestTells) {
    EXPECT_EQ(autoShard({{"JOB_COMPLETION_INDEX", "5"}, {"TESSARINE_SHARDS", "16"}}).text(),
              "5/16");
    EXPECT_NE(refusalOfAuto({{"JOB_COMPLETION_INDEX", "5"}}).find("TESSARINE_SHARDS is not set"),
              std::string::npos);
    EXPECT_NE(refusalOfAuto({{"JOB_COMPLETION_INDEX", "5"}, {"TESSARINE_SHARDS", "5"}})
                  .find("expected a place from 0 to 4"),
              std::string::npos);
    EXPECT_NE(refusalOfAuto({{"JOB_COMPLETION_INDEX", "x"}, {"TESSARINE_SHARDS", "5"}})
                  .find("JOB_COMPLETION_INDEX is 'x'"),
              std::string::npos);
}

TEST(Shards, AutoIsTheIndexOfAnArrayJobOfAwsBatch) {
    EXPECT_EQ(
        autoShard({{"AWS_BATCH_JOB_ARRAY_INDEX", "0"}, {"AWS_BATCH_JOB_ARRAY_SIZE", "10"}}).text(),
        "0/10");
    EXPECT_NE(refusalOfAuto({{"AWS_BATCH_JOB_ARRAY_INDEX", "0"}})
                  .find("AWS_BATCH_JOB_ARRAY_SIZE is not set"),
              std::string::npos);
}

TEST(Shards, AutoOutsideAnArrayOrInsideTwoIsRefused) {
    const std::string none = refusalOfAuto({{"TESSARINE_SHARDS", "5"}, {"SLURM_JOB_ID", "7"}});
    for (const char* word :
         {"SLURM_ARRAY_TASK_ID", "JOB_COMPLETION_INDEX", "AWS_BATCH_JOB_ARRAY_INDEX", "K/N"})
        EXPECT_NE(none.find(word), std::string::npos) << none;
    Variables both = slurm(0, 0, 7, 1, 8);
    both["JOB_COMPLETION_INDEX"] = "0";
    both["TESSARINE_SHARDS"] = "8";
    const std::string words = refusalOfAuto(both);
    for (const char* word : {"both", "SLURM_ARRAY_TASK_ID", "JOB_COMPLETION_INDEX"})
        EXPECT_NE(words.find(word), std::string::npos) << words;
}

}  // namespace
}  // namespace tessarine::tests
