#include "completions.h"

namespace tessarine {

std::string shellQuoted(const std::string& text) {
    return "'" + replaced(text, "'", R"('\'')") + "'";
}

bool takesFunctions(const Program& program) {
    for (const OptionEntry& option : program.options)
        if (option.value == OptionEntry::Value::functions) return true;
    return false;
}

std::string joinedBy(const std::string& between, const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

}  // namespace tessarine
