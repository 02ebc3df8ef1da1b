#include <fmt/format.h>

#include "completions.h"

namespace tessarine {

namespace {

std::string quoted(const std::string& text) {
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

constexpr const char* functionsHelper = R"(
function __@_functions
    set -l word (string unescape -- (commandline -ct))
    or set word (string replace -r '^["\']' '' -- (commandline -ct))
    set word (string replace -r '^--[a-z-]+=' '' -- $word)
    if not string match -q '*:*' -- $word
@NAMES@        return
    end
    set -l given (string replace -r '[^:,]*$' '' -- $word)
    set -l keys
    switch (string replace -r ':.*' '' -- $word)
@KEYS@    end
    for key in $keys
        echo $given$key=
    end
end
)";

std::string functionsHelperWith(const std::vector<FunctionKeys>& functions) {
    std::string names;
    std::string keys;
    for (const FunctionKeys& function : functions) {
        names += fmt::format("        echo {}\n", quoted(function.name));
        if (function.keys.empty()) continue;
        keys += fmt::format("        case {}\n            set keys", quoted(function.name));
        for (const std::string& key : function.keys)
            keys += " " + quoted(key);
        keys += "\n";
    }
    return replaced(replaced(functionsHelper, "@NAMES@", names), "@KEYS@", keys);
}

std::string argumentsFor(const OptionEntry& option) {
    using Value = OptionEntry::Value;
    switch (option.value) {
        case Value::none:
            return "";
        case Value::words:
            return " -x -a " + quoted(joinedBy(" ", option.words));
        case Value::functions:
            return " -x -a '(__@_functions)'";
        case Value::file:
            return option.extension.empty()
                       ? " -r -F"
                       : fmt::format(" -r -f -k -a '(__fish_complete_suffix .{})'",
                                     option.extension);
        case Value::folder:
            return " -x -a '(__fish_complete_directories)'";
        default:
            return " -x";
    }
}

}  // namespace

std::string fishCompletion(const Program& program, const std::vector<FunctionKeys>& functions) {
    std::string script =
        fmt::format("# Completion of {} for fish, made from its options.\n", program.name);
    script += takesFunctions(program) ? functionsHelperWith(functions) + "\n" : "\n";
    for (const OptionEntry& option : program.options) {
        script += "complete -c " + program.name;
        for (const std::string& name : option.names)
            script += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        script += argumentsFor(option) + " -d " + quoted(option.description) + "\n";
    }
    return replaced(std::move(script), "__@", "__" + replaced(program.name, "-", "_"));
}

}  // namespace tessarine
