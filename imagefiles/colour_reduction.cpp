#include "imagefiles/colour_reduction.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>

#include <libimagequant.h>

#include "imagefiles/colour_histogram.h"
#include "pixels/failures.h"

// The thread count of the library that libimagequant runs on. Declared here because its header
// belongs to one compiler and the library to all.
extern "C" {
int omp_get_max_threads();
void omp_set_num_threads(int count);
}

namespace tessarine {

namespace {

/// Rounds of moving each colour to the mean of the pixels that take it.
constexpr int refinements = 4;
/// Errors up to one level in each channel cannot be seen.
constexpr int32_t invisibleError = 3;

struct Colour {
    int32_t red = 0;
    int32_t green = 0;
    int32_t blue = 0;
};

/// libimagequant adds up partial sums of threads, so its results depend on their number. While
/// this lives, the calling thread's calls use one.
class OneThread {
  public:
    OneThread() : before_(omp_get_max_threads()) { omp_set_num_threads(1); }
    ~OneThread() { omp_set_num_threads(before_); }
    OneThread(const OneThread&) = delete;
    OneThread& operator=(const OneThread&) = delete;

  private:
    int before_;
};

struct DestroyLiq {
    void operator()(liq_attr* p) const { liq_attr_destroy(p); }
    void operator()(liq_histogram* p) const { liq_histogram_destroy(p); }
    void operator()(liq_result* p) const { liq_result_destroy(p); }
};

/// A mean colour of the histogram and how many pixels it stands for.
struct Sample {
    float red = 0;
    float green = 0;
    float blue = 0;
    float weight = 0;
};

/// The colours being chosen, by channel, so that distances to all of them are computed at once.
struct ColourSet {
    std::array<float, 256> red{};
    std::array<float, 256> green{};
    std::array<float, 256> blue{};
    int32_t count = 0;

    void add(float r, float g, float b) {
        red[count] = r;
        green[count] = g;
        blue[count] = b;
        ++count;
    }
    /// The place of the colour nearest to a sample, and the square of its distance.
    std::pair<int32_t, float> nearest(const Sample& sample) const {
        std::array<float, 256> distance;
        for (int32_t i = 0; i < 256; ++i) {
            const float r = sample.red - red[i];
            const float g = sample.green - green[i];
            const float b = sample.blue - blue[i];
            distance[i] = r * r + g * g + b * b;
        }
        int32_t best = 0;
        for (int32_t i = 1; i < count; ++i)
            if (distance[i] < distance[best]) best = i;
        return {best, distance[best]};
    }
};

/// The library reserves memory by the square of the number of colours that it is given first, up to
/// 1.4 GB that it never touches. It is given a few first; the choice is the same.
bool addColours(liq_histogram* histogram, liq_attr* options,
                std::vector<liq_histogram_entry>& entries) {
    constexpr size_t few = 2000;
    const size_t first = std::min(entries.size(), few);
    const auto add = [&](size_t from, size_t to) {
        return liq_histogram_add_colors(histogram, options, entries.data() + from,
                                        static_cast<int>(to - from), 0) == LIQ_OK;
    };
    return add(0, first) && (first == entries.size() || add(first, entries.size()));
}

ColourSet firstChoice(const std::vector<Sample>& samples, int32_t maxColours) {
    std::vector<liq_histogram_entry> entries;
    entries.reserve(samples.size());
    for (const Sample& sample : samples) {
        const auto byte = [](float value) { return static_cast<unsigned char>(value + 0.5F); };
        entries.push_back({{byte(sample.red), byte(sample.green), byte(sample.blue), 255},
                           static_cast<unsigned int>(sample.weight)});
    }

    const OneThread oneThread;
    const std::unique_ptr<liq_attr, DestroyLiq> options(liq_attr_create());
    if (options == nullptr) throw StatementFailed("not enough memory to choose colours");
    liq_set_max_colors(options.get(), maxColours);
    const std::unique_ptr<liq_histogram, DestroyLiq> histogram(liq_histogram_create(options.get()));
    liq_result* result = nullptr;
    if (histogram == nullptr || !addColours(histogram.get(), options.get(), entries) ||
        liq_histogram_quantize(histogram.get(), options.get(), &result) != LIQ_OK)
        throw StatementFailed("not enough memory to choose colours");
    const std::unique_ptr<liq_result, DestroyLiq> owner(result);

    ColourSet chosen;
    const liq_palette* palette = liq_get_palette(result);
    for (unsigned int i = 0; i < palette->count; ++i)
        chosen.add(palette->entries[i].r, palette->entries[i].g, palette->entries[i].b);
    return chosen;
}

/// libimagequant stops early where it finds the colours good enough. The places that are left go
/// to those samples that are off the most.
void useUpPlaces(ColourSet& chosen, const std::vector<Sample>& samples, int32_t maxColours) {
    if (chosen.count >= maxColours) return;
    std::vector<float> distance;
    distance.reserve(samples.size());
    for (const Sample& sample : samples)
        distance.push_back(chosen.nearest(sample).second);
    while (chosen.count < maxColours) {
        size_t worst = 0;
        for (size_t i = 1; i < samples.size(); ++i)
            if (distance[i] * samples[i].weight > distance[worst] * samples[worst].weight)
                worst = i;
        if (distance[worst] <= 0) return;
        const Sample added = samples[worst];
        chosen.add(added.red, added.green, added.blue);
        for (size_t i = 0; i < samples.size(); ++i) {
            const float r = samples[i].red - added.red;
            const float g = samples[i].green - added.green;
            const float b = samples[i].blue - added.blue;
            distance[i] = std::min(distance[i], r * r + g * g + b * b);
        }
    }
}

void refine(ColourSet& chosen, const std::vector<Sample>& samples) {
    for (int round = 0; round < refinements; ++round) {
        std::array<std::array<double, 4>, 256> sums{};
        for (const Sample& sample : samples) {
            std::array<double, 4>& sum = sums[chosen.nearest(sample).first];
            const double weight = sample.weight;
            sum[0] += sample.red * weight;
            sum[1] += sample.green * weight;
            sum[2] += sample.blue * weight;
            sum[3] += weight;
        }
        for (int32_t i = 0; i < chosen.count; ++i) {
            const std::array<double, 4>& sum = sums[i];
            if (sum[3] <= 0) continue;
            chosen.red[i] = static_cast<float>(sum[0] / sum[3]);
            chosen.green[i] = static_cast<float>(sum[1] / sum[3]);
            chosen.blue[i] = static_cast<float>(sum[2] / sum[3]);
        }
    }
}

/// Finds the nearest of a set of colours, exactly. The colour cube is cut into cells of 4 levels
/// a side. Each gets a list of the colours that can be nearest to anything in it, when it is first
/// asked for: a picture visits few of the cells.
class NearestColour {
  public:
    explicit NearestColour(const std::vector<Colour>& colours)
        : colours_(colours), lists_(size_t{1} << (3 * cellBits), noList) {}

    /// The place of the nearest colour, the first of equally near ones. Channels 0 to 255.
    uint8_t operator()(const Colour& c) {
        const int32_t cell = (c.red >> cellShift) << (2 * cellBits) |
                             (c.green >> cellShift) << cellBits | c.blue >> cellShift;
        if (lists_[cell] == noList) makeList(c, cell);
        const uint8_t* list = candidates_.data() + lists_[cell];
        const uint8_t* last = list + 1 + *list;
        int32_t smallest = std::numeric_limits<int32_t>::max();
        uint8_t best = 0;
        for (const uint8_t* i = list + 1; i <= last; ++i) {
            const Colour& candidate = colours_[*i];
            const int32_t r = c.red - candidate.red;
            const int32_t g = c.green - candidate.green;
            const int32_t b = c.blue - candidate.blue;
            const int32_t distance = r * r + g * g + b * b;
            if (distance < smallest) {
                smallest = distance;
                best = *i;
            }
        }
        return best;
    }

  private:
    static constexpr int cellBits = 6;
    static constexpr int cellShift = 8 - cellBits;
    static constexpr uint32_t noList = std::numeric_limits<uint32_t>::max();

    /// No colour that is farther from the whole cell than another from its farthest corner is ever
    /// nearest.
    void makeList(const Colour& inside, int32_t cell) {
        std::array<int32_t, 256> closest;
        int32_t bound = std::numeric_limits<int32_t>::max();
        for (size_t i = 0; i < colours_.size(); ++i) {
            int32_t farthest = 0;
            closest[i] = 0;
            reach(colours_[i].red, inside.red, closest[i], farthest);
            reach(colours_[i].green, inside.green, closest[i], farthest);
            reach(colours_[i].blue, inside.blue, closest[i], farthest);
            bound = std::min(bound, farthest);
        }
        // A list is the number of its colours less 1, and their places.
        const size_t start = candidates_.size();
        lists_[cell] = static_cast<uint32_t>(start);
        candidates_.push_back(0);
        for (size_t i = 0; i < colours_.size(); ++i)
            if (closest[i] <= bound) candidates_.push_back(static_cast<uint8_t>(i));
        candidates_[start] = static_cast<uint8_t>(candidates_.size() - start - 2);
    }

    /// Adds the squares of the smallest and largest distance of a level to those of the cell that
    /// `inside` lies in.
    static void reach(int32_t level, int32_t inside, int32_t& closest, int32_t& farthest) {
        const int32_t low = inside >> cellShift << cellShift;
        const int32_t high = low + (1 << cellShift) - 1;
        const int32_t near = std::max({0, low - level, level - high});
        const int32_t far = std::max(std::abs(level - low), std::abs(level - high));
        closest += near * near;
        farthest += far * far;
    }

    const std::vector<Colour>& colours_;
    std::vector<uint32_t> lists_;
    std::vector<uint8_t> candidates_;
};

/// Whether the colours around a pixel run evenly, as in a sky or a drawn gradient, where a step
/// between two colours shows as a band. Noise and texture hide such a step by themselves.
class Evenness {
  public:
    explicit Evenness(const Bitmap& picture)
        : picture_(picture), width_(picture.width()), height_(picture.height()) {}

    bool at(int32_t x, int32_t y) const { return evenAt(x, y, 4) && evenAt(x, y, 2); }

  private:
    /// Twice the deviation, in levels, of a pixel from the mean of two others; what rounding to
    /// whole levels makes of an even run stays within it.
    static constexpr int32_t tolerance = 2;

    bool evenAt(int32_t x, int32_t y, int32_t reach) const {
        const Pixel* row = picture_.row(y);
        if (x >= reach && x + reach < width_ && !inLine(row[x - reach], row[x], row[x + reach]))
            return false;
        return y < reach || y + reach >= height_ ||
               inLine(picture_.row(y - reach)[x], row[x], picture_.row(y + reach)[x]);
    }
    static bool inLine(const Pixel& a, const Pixel& middle, const Pixel& b) {
        return std::abs(2 * middle.green - a.green - b.green) <= tolerance &&
               std::abs(2 * middle.red - a.red - b.red) <= tolerance &&
               std::abs(2 * middle.blue - a.blue - b.blue) <= tolerance;
    }

    const Bitmap& picture_;
    int32_t width_;
    int32_t height_;
};

/// What is left of a pixel's colour for its neighbours, in sixteenths of a level.
struct Remainder {
    int16_t red = 0;
    int16_t green = 0;
    int16_t blue = 0;

    void add(const Colour& error, int32_t share) {
        red = static_cast<int16_t>(red + error.red * share);
        green = static_cast<int16_t>(green + error.green * share);
        blue = static_cast<int16_t>(blue + error.blue * share);
    }
};

int32_t withRemainder(int32_t level, int32_t sixteenths) {
    return std::clamp(level + ((sixteenths + 8) >> 4), 0, 255);
}

/// An error that is passed on whole makes stray dots where the colours lie far apart.
int32_t limitedError(int32_t error) { return std::clamp(error, -24, 24); }

Colour colourOf(const Pixel& pixel) { return {pixel.red, pixel.green, pixel.blue}; }

/// Gives each pixel its nearest colour; where the picture runs evenly, the error goes on to the
/// neighbours in the shares of Floyd and Steinberg, on rows walked to and fro.
std::vector<uint8_t> mapPixels(const Bitmap& picture, const std::vector<Colour>& colours,
                               bool diffuse) {
    const int32_t width = picture.width();
    NearestColour nearest(colours);
    const Evenness even(picture);
    std::vector<uint8_t> indices(static_cast<size_t>(width) * picture.height());
    std::vector<Remainder> here(static_cast<size_t>(width) + 2);
    std::vector<Remainder> below(here.size());
    for (int32_t y = 0; y < picture.height(); ++y) {
        const Pixel* row = picture.row(y);
        uint8_t* target = indices.data() + static_cast<size_t>(y) * width;
        const int32_t step = y % 2 == 0 ? 1 : -1;
        std::fill(below.begin(), below.end(), Remainder{});
        for (int32_t k = 0, x = step > 0 ? 0 : width - 1; k < width; ++k, x += step) {
            Colour wanted = colourOf(row[x]);
            if (!diffuse || !even.at(x, y)) {
                target[x] = nearest(wanted);
                continue;
            }
            Remainder* place = &here[static_cast<size_t>(x) + 1];
            Remainder* under = &below[static_cast<size_t>(x) + 1];
            wanted = {withRemainder(wanted.red, place->red),
                      withRemainder(wanted.green, place->green),
                      withRemainder(wanted.blue, place->blue)};
            target[x] = nearest(wanted);
            const Colour& given = colours[target[x]];
            const Colour error = {limitedError(wanted.red - given.red),
                                  limitedError(wanted.green - given.green),
                                  limitedError(wanted.blue - given.blue)};
            place[step].add(error, 7);
            under[-step].add(error, 3);
            under[0].add(error, 5);
            under[step].add(error, 1);
        }
        std::swap(here, below);
    }
    return indices;
}

std::vector<Pixel> tableOf(const std::vector<Colour>& colours) {
    std::vector<Pixel> table;
    for (const Colour& c : colours)
        table.push_back({static_cast<uint8_t>(c.blue), static_cast<uint8_t>(c.green),
                         static_cast<uint8_t>(c.red), 0});
    return table;
}

}  // namespace

IndexedPicture reduceColours(const Bitmap& picture, int32_t maxColours) {
    const std::vector<ColourCell> cells = colourHistogram(picture);

    std::vector<Sample> samples;
    samples.reserve(cells.size());
    bool cellsAreColours = true;
    for (const ColourCell& cell : cells) {
        const double count = cell.count;
        samples.push_back({static_cast<float>(static_cast<double>(cell.red) / count),
                           static_cast<float>(static_cast<double>(cell.green) / count),
                           static_cast<float>(static_cast<double>(cell.blue) / count),
                           static_cast<float>(count)});
        cellsAreColours = cellsAreColours && cell.isOneColour;
    }

    ColourSet chosen;
    const bool exact = cellsAreColours && samples.size() <= static_cast<size_t>(maxColours);
    if (exact) {
        for (const Sample& sample : samples)
            chosen.add(sample.red, sample.green, sample.blue);
    } else {
        chosen = firstChoice(samples, maxColours);
        useUpPlaces(chosen, samples, maxColours);
        refine(chosen, samples);
    }

    std::vector<Colour> colours;
    for (int32_t i = 0; i < chosen.count; ++i)
        colours.push_back({static_cast<int32_t>(chosen.red[i] + 0.5F),
                           static_cast<int32_t>(chosen.green[i] + 0.5F),
                           static_cast<int32_t>(chosen.blue[i] + 0.5F)});

    const bool bandsShow =
        !exact && std::any_of(samples.begin(), samples.end(), [&](const Sample& sample) {
            return chosen.nearest(sample).second > invisibleError;
        });
    return {tableOf(colours), mapPixels(picture, colours, bandsShow)};
}

}  // namespace tessarine
