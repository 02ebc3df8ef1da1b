#include "pixels/levels.h"

// The levels of processors that rooms are built for promise no arithmetic of ciphers, which the
// library expects beside their vectors unless told.
#define HWY_DISABLE_PCLMUL_AES
#include <hwy/highway.h>

#include "pixels/point_loops.h"

namespace tessarine {

namespace {

namespace hn = hwy::HWY_NAMESPACE;

void changeOneByOne(const Levels& levels, const Pixel* source, Pixel* result, size_t count) {
    changeColours(source, result, count, [&levels](const Colour& c) {
        return eachChannel(c, [&](int32_t v) { return int32_t{levels[static_cast<size_t>(v)]}; });
    });
}

#if HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR

using Bytes = hn::ScalableTag<uint8_t>;
using Vector = hn::Vec<Bytes>;

/// Sixteen levels that stand side by side.
constexpr size_t partSize = 16;

/// Of the levels from `first` on, as many as there are for the bits of a value from `bit` on, those
/// of the values at hand. One instruction looks all bytes of a vector up among sixteen; which
/// sixteen it is to be, their upper bits choose, two and two.
/// \param signs the values, shifted so that the bit of that number is the highest
template <int bit>
HWY_INLINE Vector chosen(const uint8_t* first, const Vector* signs, Vector low) {
    if constexpr (bit < 4) {
        return hn::TableLookupBytes(hn::LoadDup128(Bytes(), first), low);
    } else {
        const hn::RebindToSigned<Bytes> numbers;
        const Vector unset = chosen<bit - 1>(first, signs, low);
        const Vector set = chosen<bit - 1>(first + (size_t{1} << bit), signs, low);
        return hn::BitCast(Bytes(), hn::IfNegativeThenElse(hn::BitCast(numbers, signs[7 - bit]),
                                                           hn::BitCast(numbers, set),
                                                           hn::BitCast(numbers, unset)));
    }
}

/// Puts the levels of the pixels that a vector holds.
HWY_INLINE void changeVector(const Levels& levels, const uint8_t* source, uint8_t* result) {
    const Bytes bytes;
    const hn::Repartition<uint32_t, Bytes> pixels;
    const Vector values = hn::LoadU(bytes, source);
    const Vector low = hn::And(values, hn::Set(bytes, partSize - 1));
    const Vector twice = hn::Add(values, values);
    const Vector fourTimes = hn::Add(twice, twice);
    const Vector signs[] = {values, twice, fourTimes, hn::Add(fourTimes, fourTimes)};
    const Vector changed = chosen<7>(levels.data(), signs, low);
    const Vector fourth = hn::BitCast(bytes, hn::Set(pixels, fourthBits));
    hn::StoreU(hn::OrAnd(hn::AndNot(fourth, changed), fourth, values), bytes, result);
}

#endif

}  // namespace

void changeLevels(const Levels& levels, const Pixel* source, Pixel* result, size_t count) {
#if HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
    const size_t atOnce = hn::Lanes(Bytes()) / sizeof(Pixel);
    if (count >= atOnce) {
        const auto change = [&](size_t from) {
            changeVector(levels, reinterpret_cast<const uint8_t*>(source + from),
                         reinterpret_cast<uint8_t*>(result + from));
        };
        size_t from = 0;
        for (; from + atOnce <= count; from += atOnce)
            change(from);
        if (from < count) change(count - atOnce);
        return;
    }
#endif
    changeOneByOne(levels, source, result, count);
}

}  // namespace tessarine
