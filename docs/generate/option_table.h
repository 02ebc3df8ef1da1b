#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarine {

/// One option of a program, as the manual page and the completions need it.
struct OptionEntry {
    enum class Value {
        none,       ///< a flag
        words,      ///< one of `words`
        functions,  ///< a function of the catalogue with its inputs
        file,       ///< a file, with `extension` where only that will do
        folder,
        free,  ///< a number, a text: nothing to choose from
    };

    std::vector<std::string> names;  ///< e.g. "-h", "--help"
    std::string valueName;           ///< e.g. "FILE"; empty for a flag
    std::string description;         ///< without a full stop
    std::string group;
    Value value = Value::none;
    std::vector<std::string> words;
    std::string extension;
    bool isRepeatable = false;  ///< may be given again and again
    bool takesMany = false;     ///< takes all words up to the next option

    /// The long name, or the short one where there is no other.
    const std::string& name() const { return names.back(); }
};

/// A program that is completed: its options, and the extensions of the files that it is given.
struct Program {
    std::string name;
    std::vector<OptionEntry> options;
    std::vector<std::string> extensions;
};

/// The runner, from the table that its command line is read with.
Program runnerProgram();

/// The window's program, from what it prints with --help.
/// \throws std::runtime_error where no option is told there
Program windowProgram(std::string_view help);

/// A function of the catalogue with the keys of its inputs.
struct FunctionKeys {
    std::string name;
    std::vector<std::string> keys;
};

std::vector<FunctionKeys> functionKeys();

/// A text with each `what` in it replaced.
std::string replaced(std::string text, std::string_view what, std::string_view with);

}  // namespace tessarine
