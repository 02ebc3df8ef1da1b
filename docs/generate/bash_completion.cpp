#include <fmt/format.h>

#include "completions.h"

namespace tessarine {

namespace {

// bash breaks words at ":" and "=", and replaces only what stands behind the last of them, unless
// the word is in quotes.
constexpr const char* functionsHelper = R"(
_@_functions()
{
    local -A keys=(
@KEYS@    )
    local word=$cur quote= name given rest key
    case $word in
        [\"\']*) quote=${word:0:1} word=${word:1} ;;
        *) word=${word//\\/} ;;
    esac
    COMPREPLY=()
    if [[ $word != *:* ]]; then
        for name in "${!keys[@]}"; do
            [[ ${name,,} == "${word,,}"* ]] || continue
            [[ $quote ]] || printf -v name %q "$name"
            COMPREPLY+=("$name")
        done
        return
    fi
    for name in "${!keys[@]}"; do
        [[ ${name,,} == "${word%%:*}" || $name == "${word%%:*}" ]] && break
        name=
    done
    [[ $name ]] || return
    rest=${word##*[:,]}
    given=${word%"$rest"}
    while read -r key; do
        [[ $key && ${key,,} == "${rest,,}"* ]] || continue
        if [[ $quote ]]; then
            COMPREPLY+=("$given$key=")
        else
            printf -v key %q "${given##*[:=]}$key="
            COMPREPLY+=("$key")
        fi
    done <<<"${keys[$name]}"
    compopt -o nospace
}
)";

std::string functionsHelperWith(const std::vector<FunctionKeys>& functions) {
    std::string keys;
    for (const FunctionKeys& function : functions)
        keys += fmt::format("        [{}]=$'{}'\n", shellQuoted(function.name),
                            replaced(joinedBy("\\n", function.keys), "'", "\\'"));
    return replaced(functionsHelper, "@KEYS@", keys);
}

std::string replyFor(const OptionEntry& option) {
    using Value = OptionEntry::Value;
    switch (option.value) {
        case Value::words:
            return fmt::format("COMPREPLY=($(compgen -W {} -- \"$cur\"))",
                               shellQuoted(joinedBy(" ", option.words)));
        case Value::functions:
            return "_@_functions";
        case Value::file:
            return option.extension.empty() ? "_filedir" : "_filedir " + option.extension;
        case Value::folder:
            return "_filedir -d";
        default:
            return ":";
    }
}

}  // namespace

std::string bashCompletion(const Program& program, const std::vector<FunctionKeys>& functions) {
    std::string script =
        fmt::format("# Completion of {} for bash, made from its options.\n", program.name);
    if (takesFunctions(program)) script += functionsHelperWith(functions);
    script +=
        "\n_@()\n{\n    local cur prev words cword split\n"
        "    _init_completion -s -n : || return\n";
    std::vector<std::string> names;
    std::string cases;
    for (const OptionEntry& option : program.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
        if (option.value != OptionEntry::Value::none)
            cases +=
                fmt::format("        {})\n            {}\n            return\n            ;;\n",
                            joinedBy(" | ", option.names), replyFor(option));
    }
    std::string takers;
    for (const OptionEntry& option : program.options)
        if (option.takesMany)
            takers += fmt::format(
                "    if [[ \" ${{words[*]}} \" == *\" {} \"* ]]; then\n        {}\n"
                "        return\n    fi\n",
                option.name(), replyFor(option));
    if (!cases.empty()) script += "    case $prev in\n" + cases + "    esac\n";
    script += fmt::format(
        "    $split && return\n"
        "    if [[ $cur == -* ]]; then\n"
        "        COMPREPLY=($(compgen -W {} -- \"$cur\"))\n"
        "        return\n"
        "    fi\n"
        "{}    _filedir '@({})'\n}} &&\n    complete -F _@ {}\n",
        shellQuoted(joinedBy(" ", names)), takers, joinedBy("|", program.extensions), program.name);
    return replaced(std::move(script), "_@", "_" + replaced(program.name, "-", "_"));
}

}  // namespace tessarine
