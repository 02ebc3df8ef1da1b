#include "filters/kernels.h"

#include <array>
#include <charconv>
#include <cmath>

#include "pixels/failures.h"
#include "pixels/numbers.h"

namespace tessarine {

namespace {

struct KernelTexts {
    std::string_view mask;   ///< the weights in reading order
    std::string_view terms;  ///< Weight, rFactor, gFactor, bFactor
};

constexpr std::array<KernelTexts, 14> kernelTexts{{
    {"1|1|1|1|1|1|1|1|1", "9|0|0|0"},
    {"1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1|1", "25|0|0|0"},
    {"0|1|0|1|3|1|0|1|0", "7|0|0|0"},
    {"1|3|1|3|9|3|1|3|1", "25|0|0|0"},
    {"-1|-1|-1|-1|15|-1|-1|-1|-1", "7|0|0|0"},
    {"0|-1|0|-1|5|-1|0|-1|0", "1|0|0|0"},
    {"-1|-1|0|-1|4|1|0|1|1", "4|0|0|0"},
    {"-1|-1|0|-1|2|1|0|1|1", "2|0|0|0"},
    {"-1|-1|-1|-1|8|-1|-1|-1|-1", "1|255|255|255"},
    {"-2|-2|-2|-2|16|-2|-2|-2|-2", "1|255|255|255"},
    {"0|-1|0|-1|4|-1|0|-1|0", "1|255|255|255"},
    {"0|-2|0|-2|8|-2|0|-2|0", "1|255|255|255"},
    {"0|0|0|0|1|0|0|0|-1", "1|128|128|128"},
    {"0|0|0|0|-1|0|0|0|1", "1|128|128|128"},
}};

/// \throws StatementFailed for a text that is not a whole number
int32_t wholeNumber(const std::string& text) {
    int32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) throw StatementFailed("no whole number: " + text);
    return number;
}

}  // namespace

std::vector<std::string> splitText(std::string_view text, char separator) {
    std::vector<std::string> items;
    for (size_t from = 0;;) {
        const size_t to = text.find(separator, from);
        items.emplace_back(text.substr(from, to - from));
        if (to == std::string_view::npos) return items;
        from = to + 1;
    }
}

tFilterKernel GetFilterKernel(int32_t number) {
    if (number < 0 || static_cast<size_t>(number) >= kernelTexts.size())
        throw StatementFailed("there is no kernel of this number");
    const KernelTexts& texts = kernelTexts[static_cast<size_t>(number)];
    const std::vector<std::string> mask = splitText(texts.mask, '|');
    const std::vector<std::string> terms = splitText(texts.terms, '|');

    const int32_t bound = roundToInteger(std::sqrt(static_cast<double>(mask.size())) - 1);
    tFilterKernel kernel;
    kernel.mskBits = KernelMask(bound + 1);
    for (int32_t row = 0; row <= bound; ++row)
        for (int32_t column = 0; column <= bound; ++column) {
            const int32_t item = row * (bound + 1) + column;
            kernel.mskBits.at(row, column) = wholeNumber(mask.at(static_cast<size_t>(item)));
        }
    kernel.Weight = wholeNumber(terms.at(0));
    kernel.rFactor = wholeNumber(terms.at(1));
    kernel.gFactor = wholeNumber(terms.at(2));
    kernel.bFactor = wholeNumber(terms.at(3));
    return kernel;
}

}  // namespace tessarine
