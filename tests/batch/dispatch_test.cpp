#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "chain_fixture.h"

// The table of calls: which member each id stands for, and which of the working state goes into
// which of its arguments, from the sheet and from a row.

namespace tessarine::tests {
namespace {

constexpr int32_t colour0 = 0x00804020;
constexpr int32_t colour1 = 0x0020C060;
constexpr int32_t pickX = 60;
constexpr int32_t pickY = 40;
const float relX = static_cast<float>(60 / 200.0);
const float relY = static_cast<float>(40 / 174.0);

/// What of the working state goes into a call: "012" numbers, "a" and "b" the two colours, "o"
/// the option, "s" the style word, "p" the point.
using Uses = std::string;

/// A function with the three numbers that it is called with, and the member's call that it then
/// stands for. Colours and point are the ones above, the option is off.
struct Dispatch {
    int16_t id;
    Uses uses;
    std::array<int32_t, 3> numbers;
    PixelBuffer (*call)(cBitFilter&);
    std::string style = "vertical";
};

using F = cBitFilter;

const std::vector<Dispatch>& withInputs() {
    static const std::vector<Dispatch> table{
        {0, "012", {30, 40, 70}, [](F& f) { return f.COLORIZE(1.8F, 0.4F, 0.7F); }},
        {1, "0", {25, 50, 75}, [](F& f) { return f.BRIGHTNESS(25); }},
        {2, "0", {40, 60, 80}, [](F& f) { return f.Contrast(40); }},
        {3, "0", {60, 20, 90}, [](F& f) { return f.SATURATION(60); }},
        {4, "0", {30, 60, 90}, [](F& f) { return f.GammaCorrection(30); }},
        {5, "01", {9, 4, 20}, [](F& f) { return f.DIFFUSE(9, 4); }},
        {6, "0", {1, 2, 0}, [](F& f) { return f.Blurs(1); }},
        {7, "012", {6, 40, 20}, [](F& f) { return f.HALFTONE(6, 40, 20); }},
        {8, "0", {5, 7, 9}, [](F& f) { return f.PIXELIZE(5); }},
        {9, "0", {12, 30, 20}, [](F& f) { return f.EMBOSS(12); }},
        {10, "0", {12, 30, 20}, [](F& f) { return f.Engrave(12); }},
        {11, "0b", {120, 60, 20}, [](F& f) { return f.CONTOUR(120, colour1); }},
        {12, "0bo", {200, 90, 40}, [](F& f) { return f.SKETCH(200, false, colour1); }},
        {13, "0", {90, 60, 120}, [](F& f) { return f.Threshold(90); }},
        {14, "0ab", {60, 30, 90}, [](F& f) { return f.ISOLATE(colour0, colour1, 60); }},
        {15, "0", {31, 63, 15}, [](F& f) { return f.Reduction(31); }},
        {16, "0ab", {60, 30, 90}, [](F& f) { return f.REPLACE(colour0, colour1, 60); }},
        {17, "012ab", {20, 60, 90}, [](F& f) { return f.ReplaceHS(colour0, colour1, 20, 60, 90); }},
        {18, "01ab", {30, 90, 60}, [](F& f) { return f.ReplaceL(colour0, colour1, 30, 90); }},
        {19, "0", {40, 60, 90}, [](F& f) { return f.SHARPEN(40); }},
        {20, "0", {70, 40, 10}, [](F& f) { return f.SOFTEN(70); }},
        {21, "01a", {80, 60, 30}, [](F& f) { return f.Shift(colour0, 80, 60); }},
        {22, "01", {20, 60, 90}, [](F& f) { return f.RotateH(20, 60); }},
        {23, "01", {10, 50, 30}, [](F& f) { return f.RotateL(10, 50); }},
        {24, "012", {10, 60, 35}, [](F& f) { return f.StretchH(10, 60, 35); }},
        {25, "012", {10, 20, 30}, [](F& f) { return f.ShiftRGB(10, 20, 30); }},
        {26,
         "012",
         {1, 2, 0},
         [](F& f) { return f.SwapRGB(1, 2, 0, false, false, false, false, false, false); }},
        {27, "01p", {50, 80, 20}, [](F& f) { return f.LENS(relX, relY, 0.25F, 80); }},
        {28, "012", {8, 30, 45}, [](F& f) { return f.WAVES(8, 30, 45); }},
        {29, "0o", {20, 60, 90}, [](F& f) { return f.BEND(20, false); }},
        {30, "01o", {60, 30, 10}, [](F& f) { return f.FOLD(60, 30, false); }},
        {31, "0o", {30, 60, 90}, [](F& f) { return f.ROTATE(30, false); }},
        {32, "01o", {40, 25, 10}, [](F& f) { return f.STRETCH(40, 25, false); }},
        {33, "0", {3, 5, 7}, [](F& f) { return f.TILE(3); }},
        {34, "01o", {40, 15, 25}, [](F& f) { return f.TWIRL(40, 15, false); }},
        {35, "012ob", {17, 23, 160}, [](F& f) { return f.Grid(17, 23, false, colour1, 160); }},
        {36, "012p", {50, 120, 30}, [](F& f) { return f.Light(relX, relY, 0.25F, 120, 30); }},
        {37, "0o", {25, 50, 75}, [](F& f) { return f.NOISE(25, false); }},
        {38, "0", {90, 60, 30}, [](F& f) { return f.Scanlines(90); }},
        {39, "0s", {1, 2, 0}, [](F& f) { return f.GLASS("squary", 1); }, "squary"},
        {40, "0s", {2, 1, 3}, [](F& f) { return f.GLASS("curtain", 2); }, "curtain"},
    };
    return table;
}

/// The kernel of Bump Mapping.
KernelMask bumps() {
    KernelMask mask(3);
    const std::array<int32_t, 9> weights{-1, -1, 0, -1, 4, 1, 0, 1, 1};
    for (int32_t i = 0; i < 9; ++i)
        mask.at(i / 3, i % 3) = weights[static_cast<size_t>(i)];
    return mask;
}

const std::vector<Dispatch>& withoutInputs() {
    constexpr std::array<int32_t, 3> numbers{3, 7, 12};
    static const std::vector<Dispatch> table{
        {41, "", numbers, [](F& f) { return f.ClassyColors(0); }},
        {42, "", numbers, [](F& f) { return f.MaskFilter(bumps(), 4, 0, 0, 0, true); }},
        {43, "", numbers, [](F& f) { return f.SpecialColors(0, -1, -1); }},
        {44, "", numbers, [](F& f) { return f.DILATE(); }},
        {45, "", numbers, [](F& f) { return f.EDGEENHANCE(10); }},
        {46, "", numbers, [](F& f) { return f.Equalize(); }},
        {47, "", numbers, [](F& f) { return f.ERODE(); }},
        {48, "", numbers, [](F& f) { return f.ClassyColors(1); }},
        {49, "", numbers, [](F& f) { return f.GreyScale(); }},
        {50, "", numbers, [](F& f) { return f.SpecialColors(-1, 0, -1); }},
        {51, "", numbers, [](F& f) { return f.Invert(); }},
        {52, "", numbers, [](F& f) { return f.OLDPHOTO(); }},
        {53, "", numbers, [](F& f) { return f.ClassyColors(10); }},
        {54, "", numbers, [](F& f) { return f.PAINTING(); }},
        {55, "", numbers, [](F& f) { return f.PHOTOCOP(); }},
        {56, "", numbers, [](F& f) { return f.ClassyColors(2); }},
        {57, "", numbers, [](F& f) { return f.ClassyColors(3); }},
        {58, "", numbers, [](F& f) { return f.RELIEF(); }},
        {60, "", numbers, [](F& f) { return f.ClassyColors(7); }},
        {61, "", numbers, [](F& f) { return f.COLORIZE(0.5F, 0.25F, 1.0F); }},
        {62, "", numbers, [](F& f) { return f.ClassyColors(6); }},
        {64, "", numbers, [](F& f) { return f.THERMIQUE(); }},
        {65, "", numbers, [](F& f) { return f.ClassyColors(11); }},
        {66, "", numbers, [](F& f) { return f.XBLACK(); }},
        {67, "", numbers, [](F& f) { return f.ClassyColors(8); }},
        {68, "", numbers, [](F& f) { return f.Flip(true, false); }},
        {69, "", numbers, [](F& f) { return f.Flip(false, true); }},
    };
    return table;
}

std::vector<Dispatch> allCalls() {
    std::vector<Dispatch> all = withInputs();
    all.insert(all.end(), withoutInputs().begin(), withoutInputs().end());
    return all;
}

class DispatchTable : public ChainFixture {
  protected:
    DispatchTable() {
        batch.cFilter.timeGetTime = [] { return 0U; };
        batch.sheetReady = true;
    }

    static TrayRow rowOf(const Dispatch& function) {
        TrayRow row;
        row.text = "row";
        row.Tag = function.id;
        row.columns = {std::to_string(function.numbers[0]),
                       std::to_string(function.numbers[1]),
                       std::to_string(function.numbers[2]),
                       std::to_string(colour0),
                       std::to_string(colour1),
                       "False",
                       function.style,
                       std::to_string(pickX),
                       std::to_string(pickY)};
        return row;
    }
    PixelBuffer resultOf(const TrayRow& row, bool forRun = true) {
        batch.Ltray = {row};
        batch.cFilter.random = RandomGenerator();
        batch.cFilter.Bits(picture);
        batch.workBits = picture;
        batch.ApplyRow(static_cast<int16_t>(row.Tag), 1, forRun);
        return batch.workBits;
    }

    /// Sets the sheet, or what its panels' controls would have left, to a function's inputs.
    void setSheet(const Dispatch& function) {
        batch.highestSlider = 2;
        for (size_t i = 0; i < 3; ++i)
            batch.sbFilter[i].value = function.numbers[i];
        const bool hasPanel = function.id == 26 || function.id == 39 || function.id == 40;
        batch.funcParam = hasPanel ? function.numbers : std::array<int32_t, 3>{99, 98, 97};
        batch.Col = {colour0, colour1};
        batch.chkOption = 0;
        batch.funcOption = true;
        batch.funcStyle = function.style;
        batch.pickRelX = relX;
        batch.pickRelY = relY;
    }

    // Darkened, since its median brightness would else be where Equalize moves it.
    const PixelBuffer picture =
        filtered(randomBuffer(200, 174, 5), [](cBitFilter& f) { return f.BRIGHTNESS(-30); });
};

TEST_F(DispatchTable, HoldsEveryIdButTheOnesThatResizeAndTheFreeOne) {
    std::set<int32_t> ids{59, 63, 70};
    for (const Dispatch& function : allCalls())
        EXPECT_TRUE(ids.insert(function.id).second) << function.id;
    EXPECT_EQ(ids.size(), 71U);
    EXPECT_EQ(*ids.begin(), 0);
    EXPECT_EQ(*ids.rbegin(), 70);
}

TEST_F(DispatchTable, ARowCallsTheMemberOfItsIdWithItsColumns) {
    for (const Dispatch& function : allCalls()) {
        const PixelBuffer expected = filtered(picture, function.call);
        EXPECT_FALSE(expected == picture) << function.id;
        for (const bool forRun : {false, true}) {
            EXPECT_EQ(resultOf(rowOf(function), forRun), expected) << function.id;
            EXPECT_EQ(batch.cFilter.Bits(), expected) << function.id;
        }
    }
}

TEST_F(DispatchTable, ThePreviewCallsTheMemberOfItsIdWithTheSheetsValues) {
    batch.cFilter.Bits(picture);
    for (const Dispatch& function : allCalls()) {
        setSheet(function);
        batch.cFilter.random = RandomGenerator();
        batch.workBits = picture;
        batch.PreviewFunction(function.id);
        EXPECT_EQ(batch.workBits, filtered(picture, function.call)) << function.id;
        EXPECT_EQ(batch.cFilter.Bits(), picture) << function.id;
    }
}

// Without this the two above could not tell one argument from another.
TEST_F(DispatchTable, EachInputThatAFunctionTakesCountsAndNoOtherDoes) {
    const auto takes = [](const Dispatch& function, char input) {
        return function.uses.find(input) != Uses::npos;
    };
    for (const Dispatch& function : allCalls()) {
        const PixelBuffer result = resultOf(rowOf(function));
        const auto expectCounts = [&](bool counts, const TrayRow& other, const std::string& what) {
            EXPECT_EQ(resultOf(other) == result, !counts) << function.id << ": " << what;
        };
        for (const auto& [one, two] : {std::pair{1, 2}, {1, 3}, {2, 3}}) {
            TrayRow other = rowOf(function);
            std::swap(other.column(one), other.column(two));
            expectCounts(takes(function, static_cast<char>('0' + one - 1)) ||
                             takes(function, static_cast<char>('0' + two - 1)),
                         other, "numbers " + std::to_string(one) + " and " + std::to_string(two));
        }
        TrayRow other = rowOf(function);
        other.column(4) = std::to_string(0x00F0E010);
        expectCounts(takes(function, 'a'), other, "first colour");
        other = rowOf(function);
        other.column(5) = std::to_string(0x00F0E010);
        expectCounts(takes(function, 'b'), other, "second colour");
        other = rowOf(function);
        other.column(6) = "True";
        expectCounts(takes(function, 'o'), other, "option");
        other = rowOf(function);
        other.column(7) = "horizontal";
        expectCounts(takes(function, 's'), other, "style");
        for (const int k : {8, 9}) {
            other = rowOf(function);
            other.column(k) = "90";
            expectCounts(takes(function, 'p'), other, "point");
        }
    }
}

// ---- Arguments that are worked out ----

TEST_F(DispatchTable, ColorizeCountsHuesFrom84OnFromBelow0) {
    const auto hueOf = [&](const std::string& number, float hue) {
        TrayRow row;
        row.Tag = 0;
        row.columns = {number, "100", "100", "0", "0", "False", "", "0", "0"};
        const PixelBuffer result = resultOf(row);
        return result ==
               filtered(picture, [=](cBitFilter& f) { return f.COLORIZE(hue, 1.0F, 1.0F); });
    };
    EXPECT_TRUE(hueOf("0", 0.0F));
    EXPECT_TRUE(hueOf("83", 4.975F)) << "199.2 is 199";
    EXPECT_TRUE(hueOf("84", -0.95F)) << "201.6 is 202, less 240";
    EXPECT_FALSE(hueOf("84", 5.05F));
    EXPECT_FALSE(hueOf("84", -0.975F)) << "201.6 is not cut off";
    EXPECT_TRUE(hueOf("99", -0.05F)) << "237.6 is 238";
    EXPECT_TRUE(hueOf("100", 0.0F)) << "240 is 0";
    EXPECT_FALSE(hueOf("100", 6.0F));
    EXPECT_TRUE(hueOf("2", 0.125F)) << "4.8 is 5";
    EXPECT_TRUE(hueOf("1", 0.05F)) << "2.4 is 2";
    EXPECT_TRUE(hueOf("-2", -0.125F)) << "-4.8 is -5";
}

TEST_F(DispatchTable, LensAndFlareTakeTheirFirstNumberAsAPartOfTheLongerSide) {
    const auto dispatched = [&](int16_t id) {
        batch.cFilter.Bits(picture);
        batch.Ltray = {rowOf({id, "", {50, 80, 30}, nullptr})};
        batch.ApplyRow(id, 1, true);
        return batch.workBits;
    };
    for (const auto& [width, height, part] :
         {std::tuple{200, 174, 0.25F}, {100, 400, 0.125F}, {500, 20, 0.1F}}) {
        // The size that was taken in counts, not that of the picture worked on.
        batch.workWidth = width;
        batch.workHeight = height;
        EXPECT_EQ(dispatched(27), filtered(picture, [d = part](cBitFilter& f) {
                      return f.LENS(relX, relY, d, 80);
                  }));
        EXPECT_EQ(dispatched(36), filtered(picture, [d = part](cBitFilter& f) {
                      return f.Light(relX, relY, d, 80, 30);
                  }));
    }
}

TEST_F(DispatchTable, ThePreviewOfFlareMeasuresThePreviewAndThatOfLensThePictureTakenIn) {
    batch.cFilter.Bits(picture);
    for (const auto& [width, height, part] : {std::tuple{100, 80, 0.5F}, {60, 400, 0.125F}}) {
        batch.iDst.setSize(width, height);
        setSheet({36, "", {50, 120, 30}, nullptr});
        batch.PreviewFunction(36);
        EXPECT_EQ(batch.workBits, filtered(picture, [d = part](cBitFilter& f) {
                      return f.Light(relX, relY, d, 120, 30);
                  }));
        setSheet({27, "", {50, 80, 0}, nullptr});
        batch.PreviewFunction(27);
        EXPECT_EQ(batch.workBits,
                  filtered(picture, [](cBitFilter& f) { return f.LENS(relX, relY, 0.25F, 80); }));
    }
}

TEST_F(DispatchTable, ARowOfFlareMeasuresThePictureTakenInWhateverThePreviewsSize) {
    batch.iDst.setSize(100, 80);
    // A rebuild takes the point as a part of the picture taken in too.
    EXPECT_EQ(resultOf(rowOf({36, "", {50, 120, 30}, nullptr}), false),
              filtered(picture, [](cBitFilter& f) { return f.Light(relX, relY, 0.25F, 120, 30); }));
}

// ---- The point that is stored ----

/// Lens and Flare by their sheets as they open, with the calls that they then stand for: at a
/// point, on a picture whose longer side is given.
struct PointFunction {
    int16_t id;
    std::string name;
    PixelBuffer (*call)(cBitFilter&, float x, float y, int32_t longer);
};

const std::vector<PointFunction>& pointFunctions() {
    static const std::vector<PointFunction> all{
        {27, "Lens",
         [](F& f, float x, float y, int32_t longer) {
             return f.LENS(x, y, 50.0F / static_cast<float>(longer), 50);
         }},
        {36, "Flare",
         [](F& f, float x, float y, int32_t longer) {
             return f.Light(x, y, 50.0F / static_cast<float>(longer), 250, 0);
         }},
    };
    return all;
}

class StoredPoint : public ChainFixture {
  protected:
    PixelBuffer at(const PointFunction& function, const PixelBuffer& source, float x, float y) {
        const int32_t longer = std::max(source.width(), source.height());
        return filtered(source, [&](cBitFilter& f) { return function.call(f, x, y, longer); });
    }
    /// Takes a picture in and applies the pool to it, as a run does.
    PixelBuffer ran(const PixelBuffer& source) {
        batch.iSrc.setPicture(Bitmap(source));
        batch.SetPicture(batch.iSrc);
        batch.cFilter.Bits(batch.workBits);
        batch.cFilter.BitsRegion(batch.workRegion.RegionMain());
        for (size_t j = 1; j <= batch.Ltray.size(); ++j)
            batch.ApplyRow(static_cast<int16_t>(batch.Ltray[j - 1].Tag), static_cast<int16_t>(j),
                           true);
        return batch.workBits;
    }
    void selectNodeOf(int16_t id) { batch.SelectNode(findFunction(id)->treeIndex); }

    const PixelBuffer other = Bitmap(randomBuffer(120, 90, 3)).pixels();
};

TEST_F(StoredPoint, BeforeAnyClickIsTheFirstPixelThoughThePreviewMarksTheCentre) {
    for (const PointFunction& function : pointFunctions()) {
        SCOPED_TRACE(function.name);
        batch.ClearFunctions();
        selectNodeOf(function.id);
        EXPECT_EQ(batch.workBits, at(function, sample, 0.5F, 0.5F));
        batch.AddFunction(function.name);
        expectResult(at(function, sample, 0.5F, 0.5F));

        batch.RebuildChain();
        expectResult(at(function, sample, 0.0F, 0.0F));
        EXPECT_EQ(batch.iDst.drawn().pixels(), at(function, sample, 0.0F, 0.0F));
        EXPECT_FALSE(batch.workBits == at(function, sample, 0.5F, 0.5F));
        EXPECT_FALSE(batch.workBits == sample);
    }
}

TEST_F(StoredPoint, BeforeAnyClickIsTheFirstPixelInARunToo) {
    for (const PointFunction& function : pointFunctions()) {
        SCOPED_TRACE(function.name);
        cBatch fresh(platform);
        batch.Ltray.clear();
        fresh.SelectNode(findFunction(function.id)->treeIndex);
        fresh.AddFunction(function.name);
        batch.Ltray = fresh.Ltray;
        EXPECT_EQ(ran(other), at(function, other, 0.0F, 0.0F));
        EXPECT_FALSE(batch.workBits == other);
    }
}

TEST_F(StoredPoint, IsThatOfTheLastClickWhicheverFunctionItWasFor) {
    selectNodeOf(14);
    batch.PickPoint(50, 87);
    for (const PointFunction& function : pointFunctions()) {
        SCOPED_TRACE(function.name);
        batch.ClearFunctions();
        selectNodeOf(function.id);
        EXPECT_EQ(batch.workBits, at(function, sample, 0.5F, 0.5F));
        batch.AddFunction(function.name);
        batch.RebuildChain();
        expectResult(at(function, sample, 0.25F, 0.5F));
    }
    batch.Ltray.resize(1);
    EXPECT_EQ(ran(other), at(pointFunctions()[1], other, 0.25F, 0.5F));
}

}  // namespace
}  // namespace tessarine::tests
