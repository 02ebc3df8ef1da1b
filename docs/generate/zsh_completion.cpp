#include <fmt/format.h>

#include "completions.h"

namespace tessarine {

namespace {

constexpr const char* functionsHelper = R"(
_@_functions() {
  local -A keys=(
@KEYS@  )
  local name
  if compset -P '*:'; then
    name=${(Q)IPREFIX%:}
    name=${name#[\"\']}
    name=${name#--*=}
    compset -P '*,'
    [[ -n $keys[$name] ]] && compadd -S '' -- ${^${(f)keys[$name]}}=
  else
    compadd -- ${(k)keys}
  fi
}
)";

std::string functionsHelperWith(const std::vector<FunctionKeys>& functions) {
    std::string keys;
    for (const FunctionKeys& function : functions)
        keys += fmt::format("    {} $'{}'\n", shellQuoted(function.name),
                            replaced(joinedBy("\\n", function.keys), "'", "\\'"));
    return replaced(functionsHelper, "@KEYS@", keys);
}

/// Within the brackets of an argument, or between its colons.
std::string inBrackets(std::string text) {
    for (const std::string_view sign : {"\\", "[", "]", ":"})
        text = replaced(std::move(text), sign, "\\" + std::string(sign));
    return text;
}

std::string actionFor(const OptionEntry& option) {
    using Value = OptionEntry::Value;
    switch (option.value) {
        case Value::words:
            return "(" + joinedBy(" ", option.words) + ")";
        case Value::functions:
            return "_@_functions";
        case Value::file:
            return option.extension.empty()
                       ? "_files"
                       : fmt::format("_files -g \"*.(#i){}\"", option.extension);
        case Value::folder:
            return "_files -/";
        default:
            return "";
    }
}

std::string argumentsOf(const OptionEntry& option) {
    std::string lines;
    for (const std::string& name : option.names) {
        std::string text =
            option.isRepeatable ? "*" : fmt::format("({})", joinedBy(" ", option.names));
        text += name;
        const bool takesValue = option.value != OptionEntry::Value::none;
        if (takesValue) text += name.starts_with("--") ? "=" : "+";
        text += fmt::format("[{}]", inBrackets(option.description));
        if (takesValue)
            text += fmt::format(":{}:{}", inBrackets(option.valueName), actionFor(option));
        lines += fmt::format("    {} \\\n", shellQuoted(text));
    }
    return lines;
}

}  // namespace

std::string zshCompletion(const Program& program, const std::vector<FunctionKeys>& functions) {
    std::string script =
        fmt::format("#compdef {}\n# Completion of {} for zsh, made from its options.\n",
                    program.name, program.name);
    if (takesFunctions(program)) script += functionsHelperWith(functions);
    script += "\n_@() {\n  _arguments -S \\\n";
    for (const OptionEntry& option : program.options)
        script += argumentsOf(option);
    script += fmt::format("    {}\n}}\n\n_@ \"$@\"\n",
                          shellQuoted(fmt::format("*:file:_files -g \"*.(#i)({})\"",
                                                  joinedBy("|", program.extensions))));
    return replaced(std::move(script), "_@", "_" + program.name);
}

}  // namespace tessarine
