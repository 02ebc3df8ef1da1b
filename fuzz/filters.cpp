#include <array>
#include <cmath>
#include <optional>

#include "input.h"
#include "small_batch.h"

using namespace tessarine;

namespace {

/// A row of a file can hold any number and any colour, whatever the sheets allow; a region of
/// pixels can lie anywhere.
struct Row {
    const FunctionDef* function = nullptr;
    TrayRow row;
    PixelBuffer picture;
    RegionHandle region;
    bool forRun = false;
    int16_t degrees = 0;
    std::array<bool, 6> boxes{};
};

/// A number near those of the sheets, any that a column takes, or any that a record holds: then
/// the one of the row before stays.
int32_t numberOf(Input& input) {
    switch (input.below(4)) {
        case 0:
            return static_cast<int8_t>(input.u8());
        case 1:
            return input.u8() * 2;
        case 2:
            return input.i16();
        default:
            return input.i32();
    }
}

/// Mostly about the picture, at times anywhere.
int32_t coordinateOf(Input& input) {
    const auto byte = static_cast<int8_t>(input.u8());
    return byte == -128 ? input.i32() : byte / 2;
}

RegionHandle regionOf(Input& input, const PixelBuffer& picture) {
    const int32_t count = input.below(5);
    if (count == 0)
        return std::make_shared<const Region>(Rect{0, 0, picture.width(), picture.height()});
    std::vector<int32_t> words{32, 1, count, 16 * count, 0, 0, 0, 0};
    for (int32_t i = 0; i < 4 * count; ++i)
        words.push_back(coordinateOf(input));
    return Region::fromBlock(words);
}

std::string styleOf(Input& input) {
    constexpr std::array<const char*, 6> known{"slanting", "vertical", "horizontal",
                                               "squary",   "curtain",  ""};
    const size_t choice = input.u8();
    return choice < 250 ? known[choice % known.size()] : textOf(input.take(30));
}

std::optional<Row> rowOf(Input& input) {
    const std::span<const FunctionDef> table = functionTable();
    Row made;
    made.function = &table[input.u8() % table.size()];
    const int32_t width = 1 + input.below(41);
    const int32_t height = 1 + input.below(41);
    made.picture = randomPicture(width, height, input.u8());
    const uint8_t flags = input.u8();
    made.forRun = (flags & 1) != 0;
    made.row.text = made.function->name;
    made.row.Tag = made.function->id;
    std::array<int32_t, 3> numbers{};
    for (int32_t& number : numbers)
        number = numberOf(input);
    const bool option = (flags & 2) != 0;
    if (made.row.Tag == 59) boundResize(numbers[0], numbers[1], option);
    for (int k = 0; k < 3; ++k)
        made.row.column(k + 1) = std::to_string(numbers[static_cast<size_t>(k)]);
    made.row.column(4) = std::to_string(input.i32());
    made.row.column(5) = std::to_string(input.i32());
    made.row.column(6) = truthText(option);
    made.row.column(7) = styleOf(input);
    made.row.column(8) = std::to_string(numberOf(input));
    made.row.column(9) = std::to_string(numberOf(input));
    made.degrees = input.i16();
    for (size_t i = 0; i < made.boxes.size(); ++i)
        made.boxes[i] = (flags >> (2 + i) & 1) != 0;
    made.region = regionOf(input, made.picture);
    if (made.region == nullptr) return std::nullopt;
    return made;
}

struct Applied {
    PixelBuffer result;
    PixelBuffer image;
    uint32_t randomState = 0;
};

Applied apply(const Row& given) {
    SmallBatch program(given.picture);
    cBatch& batch = program.batch;
    batch.cFilter.Progress = [](int32_t& percent) { percent = -percent; };
    batch.sbDegrees = given.degrees;
    for (size_t i = 0; i < 3; ++i) {
        batch.chkInvt[i] = given.boxes[i] ? 1 : 0;
        batch.chkKill[i] = given.boxes[i + 3] ? 1 : 0;
    }
    batch.cFilter.BitsRegion(given.region);
    batch.Ltray = {given.row};
    batch.ApplyRow(given.function->id, 1, given.forRun);
    return {batch.workBits, batch.cFilter.Bits(), batch.cFilter.random.state()};
}

/// The region is what may be sampled; all pixels of its box may change.
bool samplesFromRegion(int32_t id) {
    constexpr std::array<int32_t, 8> ids{5, 29, 30, 31, 32, 34, 39, 40};
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

bool resizes(int32_t id) { return id == 59 || id == 70; }

void checkNewSize(const Row& given, const PixelBuffer& result) {
    const double w = given.picture.width();
    const double h = given.picture.height();
    const auto near = [](int32_t side, double wanted) { return std::abs(side - wanted) <= 1; };
    if (given.row.Tag == 70) {
        const double angle = given.degrees * 0.0174533;
        const double c = std::abs(std::cos(angle));
        const double s = std::abs(std::sin(angle));
        expect(near(result.width(), w * c + h * s) && near(result.height(), w * s + h * c));
        return;
    }
    const int32_t width = toInteger32(given.row.column(1));
    const double height = toTruth(given.row.column(6))
                              ? width / w * h
                              : static_cast<double>(toInteger32(given.row.column(2)));
    if (width >= 1 && height > 0.5)
        expect(result.width() == width && near(result.height(), height));
}

/// What the function may not touch is as it was: the region's outside, the margin, and but for one
/// function the fourth bytes.
void checkBounds(const Row& given, const PixelBuffer& result) {
    const int32_t id = given.row.Tag;
    const bool flips = id == 68 || id == 69;
    const PixelBuffer& picture = given.picture;
    expect(result.width() == picture.width() && result.height() == picture.height());
    const Region writable = samplesFromRegion(id) ? Region(given.region->box()) : *given.region;
    for (int32_t y = -PixelBuffer::margin; y < picture.height() + PixelBuffer::margin; ++y)
        for (int32_t x = -PixelBuffer::margin; x < picture.width() + PixelBuffer::margin; ++x) {
            const Pixel& before = picture.at(x, y);
            const Pixel& after = result.at(x, y);
            if (!flips) expect(before == after || writable.contains(x, y));
            expect(before.fourth == after.fourth || id == 58);
        }
}

}  // namespace

// Every function of the table, with any numbers, on any picture and any region: it ends, keeps to
// its bounds, and does the same again. A region may reach over the margin, which is then painted.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const std::optional<Row> row = rowOf(input);
    if (!row) return 0;
    const Applied applied = apply(*row);
    if (resizes(row->row.Tag))
        checkNewSize(*row, applied.result);
    else
        checkBounds(*row, applied.result);
    const Applied again = apply(*row);
    expect(again.result == applied.result && again.image == applied.image);
    expect(again.randomState == applied.randomState);
    return 0;
}
