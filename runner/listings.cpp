#include "runner/listings.h"

#include <fmt/format.h>

#include "batch/functions.h"
#include "imagefiles/format_table.h"
#include "runner/function_arguments.h"

namespace tessarine {

std::string functionListing() {
    std::string text;
    for (const TreeNode& node : catalogueTree()) {
        const FunctionDef* function = findFunction(node.functionId);
        if (function == nullptr) {
            text += fmt::format("{}{}\n", text.empty() ? "" : "\n", node.text);
            continue;
        }
        text += fmt::format("  {}\n      {}\n", function->name, function->sentence);
        for (const FunctionInput& input : inputsOf(*function)) {
            text += fmt::format("      {}: {}", input.key, input.values);
            if (!input.initial.empty()) text += fmt::format(" (first {})", input.initial);
            text += "\n";
        }
    }
    return text;
}

std::string formatListing() {
    std::string text;
    for (int16_t row = 0; row < formatRowCount; ++row) {
        const FormatRow& format = formatTable()[static_cast<size_t>(row)];
        text += fmt::format("{:2}  {:<12} {:<4} {}\n", row, format.shortName, format.extension,
                            format.text);
    }
    return text;
}

}  // namespace tessarine
