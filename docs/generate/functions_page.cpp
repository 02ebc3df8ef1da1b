#include "functions_page.h"

#include <cctype>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

#include "batch/functions.h"
#include "runner/function_arguments.h"
#include "runner/preparation.h"
#include "runner/terminal_platform.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

constexpr const char* pictures = "pictures/functions";

/// What --apply is given to show a function: its name, and its example behind a colon.
std::string exampleOf(const FunctionDef& function) {
    std::string argument(function.name);
    if (!function.example.empty()) argument += fmt::format(":{}", function.example);
    return argument;
}

/// Saves what a run over the sample gives as PNG.
void runOverSample(const std::vector<FunctionSource>& functions, const fs::path& sample,
                   const fs::path& target) {
    CommandLine line;
    line.pictures = {{GivenPictures::Kind::path, sample.string()}};
    line.functions = functions;
    line.to = target.parent_path().string();
    line.name = target.stem().string();
    line.format = "png";
    line.onExists = OnExists::overwrite;
    TerminalPlatform platform;
    cBatch batch(platform);
    prepareRun(batch, line);
    std::string output;
    batch.report.onEntry = [&output](const PictureReport& entry) {
        if (entry.status == PictureReport::Status::saved) output = entry.output;
    };
    batch.BatchEach();
    if (output.empty()) throw std::runtime_error(target.string() + " could not be made");
    fs::rename(output, target);
}

/// The name that a heading has in links: in lower case, blanks as "-", without other signs.
std::string anchorOf(std::string_view heading) {
    std::string anchor;
    for (const char c : heading) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-')
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        else if (c == ' ')
            anchor += '-';
    }
    return anchor;
}

std::string sectionOf(const FunctionDef& function, std::string_view group) {
    std::string text =
        fmt::format("### {}\n\n{} · {}\n\n", function.name, group, function.sentence);
    const std::vector<FunctionInput> inputs = inputsOf(function);
    if (inputs.empty()) {
        text += "It has no inputs.\n\n";
    } else {
        text += "| Input | Values | At first |\n|---|---|---|\n";
        for (const FunctionInput& input : inputs)
            text += fmt::format("| {} | {} | {} |\n", input.key, input.values, input.initial);
        text += "\n";
    }
    text += fmt::format("`--apply \"{}\"`\n\n", exampleOf(function));
    text += fmt::format(
        "| before | after |\n|---|---|\n| ![the sample]({0}/before.png) | "
        "![the sample after {1}]({0}/{2}.png) |\n",
        pictures, function.name, pictureNameOf(function.name));
    return text;
}

}  // namespace

std::string pictureNameOf(std::string_view function) {
    std::string name;
    for (const char c : function) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        else if (!name.empty() && name.back() != '-')
            name += '-';
    }
    if (name.ends_with('-')) name.pop_back();
    return name;
}

void writeFunctionsPage(const fs::path& folder, const fs::path& sample) {
    const fs::path shown = folder / pictures;
    fs::create_directories(shown);
    runOverSample({}, sample, shown / "before.png");

    std::string contents;
    std::string sections;
    std::string_view group;
    for (const TreeNode& node : catalogueTree()) {
        const FunctionDef* function = findFunction(node.functionId);
        if (function == nullptr) {
            group = node.text;
            contents += fmt::format("{}- [{}](#{})\n", contents.empty() ? "\n" : "", group,
                                    anchorOf(group));
            sections += fmt::format("\n## {}\n", group);
            continue;
        }
        contents += fmt::format("  - [{}](#{})\n", function->name, anchorOf(function->name));
        sections += "\n" + sectionOf(*function, group);
        runOverSample({{FunctionSource::Kind::apply, exampleOf(*function)}}, sample,
                      shown / (pictureNameOf(function->name) + ".png"));
    }

    std::ofstream page(folder / "functions.md", std::ios::binary);
    page << "# Functions\n\n"
            "The image functions in the order of the catalogue: what each does, its inputs with "
            "their ranges and what they show at first, how the command line spells it, and what it "
            "makes of the sample picture that way. Colours are written RRGGBB; X and Y are a point "
            "of the sample, which keeps its relative place in pictures of any size.\n\n"
            "This page is made by `script/docs` from the table of functions in `batch/`. Changes "
            "belong there.\n"
         << contents << sections;
    if (!page.flush()) throw std::runtime_error("functions.md could not be written");
}

}  // namespace tessarine
