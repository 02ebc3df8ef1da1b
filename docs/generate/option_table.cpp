#include "option_table.h"

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

#include "batch/accepted_files.h"
#include "batch/functions.h"
#include "imagefiles/format_table.h"
#include "runner/function_arguments.h"
#include "runner/options.h"

namespace tessarine {

namespace {

/// What stands for the value, without what the library adds of checks: "N" of "N:INT in [1 - 9]".
std::string valueNameOf(const CLI::Option& option) {
    const std::string whole = option.get_type_name();
    int depth = 0;
    for (size_t i = 0; i < whole.size(); ++i) {
        if (whole[i] == '[') ++depth;
        if (whole[i] == ']') --depth;
        if (whole[i] == ':' && depth == 0) return whole.substr(0, i);
    }
    return whole;
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (const FormatRow& row : formatTable())
        names.emplace_back(row.shortName);
    return names;
}

/// What can stand for the value goes by its name. A name that is not known here is taken for a
/// file's, of which shells know what there is.
void chooseValue(OptionEntry& entry) {
    using Value = OptionEntry::Value;
    static const std::set<std::string> free{"N", "SECONDS", "MIB", "TEXT", "K/N"};
    std::string name = entry.valueName;
    entry.takesMany = name.ends_with("...");
    if (entry.takesMany) name.resize(name.size() - 3);

    entry.value = Value::file;
    if (name.empty()) {
        entry.value = Value::none;
    } else if (name.starts_with("\"NAME[")) {
        entry.value = Value::functions;
    } else if (name == "ROW") {
        entry.value = Value::words;
        entry.words = formatNames();
    } else if (name == "rgb") {
        entry.value = Value::words;
        entry.words = {"r", "g", "b", "rg", "rb", "gb", "rgb"};
    } else if (name.find('|') != std::string::npos) {
        entry.value = Value::words;
        std::istringstream parts(name);
        for (std::string word; std::getline(parts, word, '|');)
            if (std::all_of(word.begin(), word.end(),
                            [](char c) { return c == '-' || (c >= 'a' && c <= 'z'); }))
                entry.words.push_back(word);
    } else if (name == "FOLDER") {
        entry.value = Value::folder;
    } else if (free.contains(name)) {
        entry.value = Value::free;
    }
    // A kind of file is told in brackets.
    std::smatch kind;
    if (entry.value == Value::file &&
        std::regex_search(entry.description, kind, std::regex(R"(\((qfk|qpkl)\))")))
        entry.extension = kind[1];
}

OptionEntry entryOf(const CLI::Option& option) {
    OptionEntry entry;
    for (const std::string& name : option.get_snames())
        entry.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        entry.names.push_back("--" + name);
    if (option.get_items_expected_max() > 0) entry.valueName = valueNameOf(option);
    entry.description = option.get_description();
    entry.group = option.get_group();
    entry.isRepeatable = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    chooseValue(entry);
    return entry;
}

}  // namespace

Program runnerProgram() {
    Program program;
    visitOptions([&program](const CLI::App& app) {
        program.name = app.get_name();
        for (const CLI::Option* option : app.get_options())
            if (!option->get_positional()) program.options.push_back(entryOf(*option));
    });
    for (const std::string_view extension : acceptedExtensions())
        program.extensions.emplace_back(extension);
    return program;
}

Program windowProgram(std::string_view help) {
    Program program;
    program.name = "tessarine";
    std::istringstream lines{std::string(help)};
    const std::regex option(R"(  (--[a-z-]+) +(\S.*))");
    std::smatch parts;
    for (std::string line; std::getline(lines, line);) {
        if (!std::regex_match(line, parts, option)) continue;
        OptionEntry entry;
        entry.names = {parts[1]};
        entry.description = parts[2];
        program.options.push_back(std::move(entry));
    }
    if (program.options.empty())
        throw std::runtime_error(
            "the window's --help tells no option, in lines of '  --name  text'");
    program.extensions = {"qfk", "qpkl"};
    for (const std::string_view extension : acceptedExtensions())
        program.extensions.emplace_back(extension);
    return program;
}

std::vector<FunctionKeys> functionKeys() {
    std::vector<FunctionKeys> functions;
    for (const TreeNode& node : catalogueTree()) {
        const FunctionDef* function = findFunction(node.functionId);
        if (function == nullptr) continue;
        FunctionKeys entry{std::string(function->name), {}};
        for (const FunctionInput& input : inputsOf(*function))
            entry.keys.push_back(input.key);
        functions.push_back(std::move(entry));
    }
    return functions;
}

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

}  // namespace tessarine
