#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "support/pictures.h"
#include "support/recorder.h"

// A walk over the whole table: every function at every end of its inputs, on pictures of every
// shape. What is asked is what holds for all of them: the size, the region, the fourth channel and
// the margin. What each one computes is asked elsewhere.

namespace tessarine::tests {
namespace {

/// Gives the picture another size.
bool resizes(int32_t id) { return id == 59 || id == 70; }
/// Computes the fourth channel.
bool writesFourth(int32_t id) { return id == 58; }
/// The region is what may be sampled; all pixels of its box may change.
bool samplesFromRegion(int32_t id) {
    static const std::set<int32_t> ids{29, 30, 31, 32, 34, 39, 40, 5};
    return ids.contains(id);
}
/// The region plays no part.
bool ignoresRegion(int32_t id) { return id == 68 || id == 69; }

struct Size {
    int32_t width;
    int32_t height;
};

class Walk : public testing::Test {
  protected:
    /// One way to set a sheet.
    struct Setting {
        std::string text;
        std::function<void(cBatch&)> set = [](cBatch&) {};
    };
    using Settings = std::vector<Setting>;

    /// Every setting followed by every choice.
    static Settings combined(const Settings& settings, const Settings& choices) {
        Settings all;
        for (const Setting& setting : settings)
            for (const Setting& choice : choices)
                all.push_back({setting.text + " " + choice.text, [=](cBatch& b) {
                                   setting.set(b);
                                   choice.set(b);
                               }});
        return all;
    }

    static Settings choicesOf(Panel panel) {
        Settings choices;
        const auto add = [&choices](const std::string& text, std::function<void(cBatch&)> set) {
            choices.push_back({text, std::move(set)});
        };
        switch (panel) {
            case Panel::frBanks:
                for (int16_t column = 0; column < 3; ++column)
                    for (int16_t bank = 0; bank < 3; ++bank)
                        add("bank", [=](cBatch& b) { b.ChooseBank(column, bank); });
                break;
            case Panel::FrmGlass:
                for (int16_t style = 0; style < 4; ++style)
                    for (int32_t strength = 0; strength < (style == 0 ? 2 : 3); ++strength)
                        add("glass", [=](cBatch& b) {
                            b.ChooseGlass(style);
                            b.ChooseGlassStrength(strength);
                        });
                break;
            case Panel::FrmCurtain:
                for (int16_t style = 0; style < 4; ++style)
                    add("curtain", [=](cBatch& b) { b.ChooseCurtain(style); });
                break;
            case Panel::FrResize:
                for (const char* side : {"100", "1", "300"})
                    for (const int16_t ticked : {int16_t{1}, int16_t{0}})
                        add("resize", [=](cBatch& b) {
                            b.ChangeWidth(side);
                            b.ChangeHeight(side);
                            b.ChangeKeepProportions(ticked);
                            b.ChangeInterpolate(ticked);
                        });
                break;
            case Panel::FrRotate:
                for (const int32_t degrees : {0, lowestDegrees, highestDegrees, 45, -7})
                    for (const int16_t ticked : {int16_t{0}, int16_t{1}})
                        add("rotate", [=](cBatch& b) {
                            b.ChangeDegrees(degrees);
                            b.ChangeAntialiasing(ticked);
                        });
                break;
            case Panel::none:
                add("", [](cBatch&) {});
        }
        return choices;
    }

    /// Every slider at its first value and both its ends, the option both ways, every choice of a
    /// panel, points in the middle and in the corners.
    static Settings settingsOf(const FunctionDef& function) {
        Settings settings = choicesOf(function.panel);
        for (size_t i = 0; i < function.sliders.size(); ++i) {
            Settings values;
            const SliderDef& slider = function.sliders[i];
            for (const int32_t value : {slider.initial, slider.min, slider.max})
                values.push_back({std::to_string(value), [=](cBatch& b) {
                                      b.MoveSlider(static_cast<int16_t>(i), value);
                                  }});
            settings = combined(settings, values);
        }
        if (function.option)
            settings = combined(settings, {{"off", [](cBatch& b) { b.ChangeOption(0); }},
                                           {"on", [](cBatch& b) { b.ChangeOption(1); }}});
        if (function.picksPoint)
            settings = combined(settings, {{"middle", [](cBatch& b) { b.PickPoint(100, 87); }},
                                           {"first", [](cBatch& b) { b.PickPoint(0, 0); }},
                                           {"last", [](cBatch& b) { b.PickPoint(199, 173); }}});
        return settings;
    }

    void set(const FunctionDef& function, const Setting& setting) {
        // The sheet acts on the sample, as in the window.
        batch.SetPicture(batch.iOri);
        batch.cFilter.Bits(batch.workBits);
        batch.cFilter.BitsRegion(batch.workRegion.RegionMain());
        batch.SelectNode(function.treeIndex);
        setting.set(batch);
    }

    /// The function on a picture of its own, as a row would apply it.
    PixelBuffer resultOf(const FunctionDef& function, const PixelBuffer& picture,
                         const RegionHandle& region) {
        batch.workWidth = picture.width();
        batch.workHeight = picture.height();
        if (picture.width() > 0 && picture.height() > 0)
            batch.iSrc.setSize(picture.width(), picture.height());
        batch.workBits = picture;
        batch.cFilter.Bits(picture);
        batch.cFilter.BitsRegion(region);
        PixelBuffer result = function.call(batch, CallSite::row);
        const bool sizeStays =
            result.width() == picture.width() && result.height() == picture.height();
        EXPECT_TRUE(sizeStays || resizes(function.id));
        return result;
    }

    static void expectOutsideUntouched(const FunctionDef& function, const PixelBuffer& picture,
                                       const PixelBuffer& result, const Region& region) {
        if (resizes(function.id) || ignoresRegion(function.id)) return;
        const Region writable = samplesFromRegion(function.id) ? Region(region.box()) : region;
        int touched = 0;
        int fourth = 0;
        for (int32_t y = -2; y <= picture.height() + 1; ++y)
            for (int32_t x = -2; x <= picture.width() + 1; ++x) {
                const Pixel& before = picture.at(x, y);
                const Pixel& after = result.at(x, y);
                if (!writable.contains(x, y) && !(before == after)) ++touched;
                if (before.fourth != after.fourth) ++fourth;
            }
        EXPECT_EQ(touched, 0) << "pixels outside the region";
        if (!writesFourth(function.id)) {
            EXPECT_EQ(fourth, 0) << "fourth bytes";
        }
    }

    Recorder platform;
    cBatch batch{platform};
};

/// Two rectangles that overlap or not, whose box leaves a pixel on each side where there is one.
RegionHandle innerRegion(const Size& size) {
    const int32_t left = size.width >= 3 ? 1 : 0;
    const int32_t top = size.height >= 3 ? 1 : 0;
    const int32_t right = size.width - left;
    const int32_t bottom = size.height - top;
    const int32_t width = right - left;
    const int32_t height = bottom - top;
    return regionOf({{left, top, left + (width + 1) / 2, top + (height + 1) / 2},
                     {left + width / 3, top + height / 2, right, bottom}});
}

/// The same up to the picture's edges.
RegionHandle outerRegion(const Size& size) {
    return regionOf({{0, 0, (size.width + 1) / 2, (size.height + 1) / 2},
                     {size.width / 3, size.height / 2, size.width, size.height}});
}

/// From the middle on to beyond the margin.
RegionHandle regionBeyond(const Size& size) {
    return regionOf({{size.width / 2, size.height / 2, size.width + 9, size.height + 7}});
}

/// Right of the margin.
RegionHandle regionOutside(const Size& size) {
    return regionOf({{size.width + 2, 0, size.width + 5, size.height}});
}

TEST_F(Walk, EveryFunctionKeepsToItsBoundsOnPicturesOfEveryShape) {
    const std::vector<Size> sizes{{1, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 2}, {41, 30}};
    batch.cFilter.timeGetTime = [] { return 0U; };
    int calls = 0;
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0) continue;
        ASSERT_NE(function.call, nullptr) << function.name;
        for (const Setting& setting : settingsOf(function)) {
            set(function, setting);
            for (const Size& size : sizes) {
                SCOPED_TRACE(std::string(function.name) + " " + setting.text + " on " +
                             std::to_string(size.width) + " by " + std::to_string(size.height));
                const PixelBuffer picture = randomBuffer(size.width, size.height, 7);
                for (const RegionHandle& region : {wholeRegion(picture), outerRegion(size),
                                                   innerRegion(size), regionBeyond(size)}) {
                    expectOutsideUntouched(function, picture, resultOf(function, picture, region),
                                           *region);
                    ++calls;
                }
                if (HasFailure()) return;
            }
        }
    }
    EXPECT_GT(calls, 69 * 4 * 6);
}

TEST_F(Walk, TheInnerRegionsBoxIsAProperPartOfThePicture) {
    const Rect box = innerRegion({41, 30})->box();
    EXPECT_EQ(box, (Rect{1, 1, 40, 29}));
    EXPECT_FALSE(*innerRegion({41, 30}) == Region(box));
}

TEST_F(Walk, WhereTheRegionHoldsNothingOfThePictureTheResultIsTheSource) {
    batch.cFilter.timeGetTime = [] { return 0U; };
    int calls = 0;
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0 || resizes(function.id) || ignoresRegion(function.id)) continue;
        for (const Setting& setting : settingsOf(function)) {
            set(function, setting);
            for (const Size& size : std::vector<Size>{{1, 1}, {1, 9}, {17, 12}}) {
                SCOPED_TRACE(std::string(function.name) + " " + setting.text + " on " +
                             std::to_string(size.width) + " by " + std::to_string(size.height));
                const PixelBuffer picture = randomBuffer(size.width, size.height, 7);
                const auto empty = std::make_shared<const Region>();
                EXPECT_EQ(resultOf(function, picture, empty), picture) << "empty region";
                EXPECT_EQ(resultOf(function, picture, nullptr), picture) << "no region";
                const RegionHandle outside = regionOutside(size);
                EXPECT_EQ(resultOf(function, picture, outside), picture) << "beyond the picture";
                ++calls;
                if (HasFailure()) return;
            }
        }
    }
    EXPECT_GT(calls, 65 * 3);
}

TEST_F(Walk, FlipTurnsThePictureWithoutARegion) {
    const PixelBuffer picture = randomBuffer(17, 12, 7);
    for (const int16_t id : {int16_t{68}, int16_t{69}}) {
        const FunctionDef& function = *findFunction(id);
        set(function, {"", [](cBatch&) {}});
        EXPECT_EQ(resultOf(function, picture, std::make_shared<const Region>()),
                  resultOf(function, picture, wholeRegion(picture)));
    }
}

TEST_F(Walk, EveryFunctionGivesTheSamePictureTwice) {
    batch.cFilter.timeGetTime = [] { return 0U; };
    const PixelBuffer picture = randomBuffer(37, 23, 8);
    const RegionHandle whole = wholeRegion(picture);
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0) continue;
        for (const Setting& setting : settingsOf(function)) {
            set(function, setting);
            batch.cFilter.random = RandomGenerator();
            const PixelBuffer first = resultOf(function, picture, whole);
            batch.cFilter.random = RandomGenerator();
            EXPECT_EQ(resultOf(function, picture, whole), first)
                << function.name << " " << setting.text;
        }
    }
}

TEST_F(Walk, OnAnEmptyPictureEveryFunctionEnds) {
    batch.cFilter.timeGetTime = [] { return 0U; };
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0 || resizes(function.id)) continue;
        for (const Setting& setting : settingsOf(function)) {
            set(function, setting);
            for (const Size& size : std::vector<Size>{{0, 0}, {0, 5}, {5, 0}}) {
                const PixelBuffer picture(size.width, size.height);
                const RegionHandle whole = wholeRegion(picture);
                EXPECT_EQ(resultOf(function, picture, whole), picture)
                    << function.name << " " << setting.text;
                EXPECT_EQ(resultOf(function, picture, regionBeyond(size)).width(), size.width)
                    << function.name << " " << setting.text;
            }
        }
    }
}

// ---- The functions that resize, on pictures without pixels ----

TEST_F(Walk, AnEmptyPictureIsResizedToBlack) {
    // The source holder never has a side of 0 and keeps the size it had: 200 by 174.
    for (const Size& size : std::vector<Size>{{0, 0}, {0, 5}, {5, 0}})
        for (const int32_t smooth : {0, 1})
            for (const bool keepProportions : {false, true}) {
                batch.iSrc.setPicture(samplePicture());
                const FunctionDef& function = *findFunction(59);
                batch.funcParam = {40, 30, smooth};
                batch.funcOption = keepProportions;
                const PixelBuffer picture(size.width, size.height);
                EXPECT_EQ(resultOf(function, picture, wholeRegion(picture)),
                          PixelBuffer(40, keepProportions ? 35 : 30))
                    << size.width << " by " << size.height << ", " << smooth;
            }
}

TEST_F(Walk, AnEmptyPictureIsTurnedIntoBlackOfTheSourcesTurnedSize) {
    for (const Size& size : std::vector<Size>{{0, 0}, {0, 5}, {5, 0}})
        for (const bool smooth : {false, true}) {
            batch.iSrc.setPicture(Bitmap(PixelBuffer(40, 30)));
            batch.sbDegrees = 90;
            batch.funcOption = smooth;
            const PixelBuffer picture(size.width, size.height);
            EXPECT_EQ(resultOf(*findFunction(70), picture, wholeRegion(picture)),
                      PixelBuffer(30, 40))
                << size.width << " by " << size.height;
        }
}

TEST_F(Walk, WithoutASourcePictureTurningLeavesNothing) {
    for (const int16_t degrees : {0, 45, -180})
        for (const bool smooth : {false, true}) {
            batch.iSrc = PictureHolder();
            batch.sbDegrees = degrees;
            batch.funcOption = smooth;
            const PixelBuffer picture(0, 0);
            EXPECT_EQ(resultOf(*findFunction(70), picture, wholeRegion(picture)), picture);
        }
}

}  // namespace
}  // namespace tessarine::tests
