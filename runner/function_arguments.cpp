#include "runner/function_arguments.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <system_error>

#include <fmt/format.h>

#include "batch/list_files.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"
#include "runner/refusal.h"

// A function of the command line goes the way of the window: its sheet is shown, its inputs are
// changed, and the function is added.

namespace tessarine {

namespace {

constexpr std::array<std::string_view, 3> bankColumns{"Red", "Green", "Blue"};
constexpr int32_t largestSide = 32767;

bool isKey(std::string_view label, const std::string& key) {
    return lowerCase(label) == lowerCase(key);
}

/// Place of a key among labels, upper and lower case alike; -1 where it is none of them.
template <class Labels>
int16_t placeOf(const std::string& key, const Labels& labels) {
    const auto found = std::find_if(labels.begin(), labels.end(),
                                    [&](const auto& label) { return isKey(label, key); });
    return found == labels.end() ? int16_t{-1} : static_cast<int16_t>(found - labels.begin());
}

[[noreturn]] void refuse(const std::string& message) {
    throw Refusal(ExitStatus::commandLine, "--apply: " + message);
}

/// One KEY=VALUE of an argument, with the function that it belongs to for messages.
struct Assignment {
    const FunctionDef* function;
    std::string key;
    std::string value;

    [[noreturn]] void wrongValue(const std::string& expected) const {
        refuse(fmt::format("{}: '{}' is no value of {}; expected {}", function->name, value, key,
                           expected));
    }
    int32_t number(int32_t lowest, int32_t highest) const {
        int32_t result = 0;
        const char* first = value.data() + (value.starts_with('+') ? 1 : 0);
        const auto [end, failure] = std::from_chars(first, value.data() + value.size(), result);
        if (value.starts_with("+-") || failure != std::errc() ||
            end != value.data() + value.size() || result < lowest || result > highest)
            wrongValue(fmt::format("{} to {}", lowest, highest));
        return result;
    }
    int16_t ticked() const {
        for (const char* yes : {"on", "yes", "true", "1"})
            if (isKey(yes, value)) return 1;
        for (const char* no : {"off", "no", "false", "0"})
            if (isKey(no, value)) return 0;
        wrongValue("on or off");
    }
    /// RRGGBB, as a colour value with red in the low byte.
    uint32_t colour() const {
        uint32_t rgb = 0;
        const auto [end, failure] =
            std::from_chars(value.data(), value.data() + value.size(), rgb, 16);
        if (failure != std::errc() || value.size() != 6 || end != value.data() + 6)
            wrongValue("a colour as RRGGBB");
        return (rgb & 0xFF) << 16 | (rgb & 0xFF00) | rgb >> 16;
    }
    template <class Labels>
    int16_t choice(const Labels& labels) const {
        const int16_t place = placeOf(value, labels);
        if (place < 0) wrongValue(fmt::format("{}", fmt::join(labels, ", ")));
        return place;
    }
    bool hasChannel(char letter) const {
        if (value.empty() || value.find_first_not_of("rgb") != std::string::npos)
            wrongValue("letters of rgb");
        return value.find(letter) != std::string::npos;
    }
};

bool hasSwatch(const FunctionDef& function, int k) {
    if (function.swatches == Swatches::none) return false;
    return function.swatches == Swatches::both ||
           function.swatches == (k == 0 ? Swatches::onlyFirst : Swatches::onlySecond);
}

// The inputs of each special panel. They give false for a key that the panel does not have.

bool assignToBanks(cBatch& batch, const Assignment& given) {
    const int16_t column = placeOf(given.key, bankColumns);
    if (column >= 0) {
        batch.ChooseBank(column, given.choice(bankLabels));
        return true;
    }
    const bool inverts = isKey("Invert", given.key);
    if (!inverts && !isKey("Kill", given.key)) return false;
    for (int16_t i = 0; i < 3; ++i) {
        const int16_t ticked = given.hasChannel("rgb"[i]) ? 1 : 0;
        if (inverts)
            batch.ChangeInvert(i, ticked);
        else
            batch.ChangeKill(i, ticked);
    }
    return true;
}

bool assignToGlass(cBatch& batch, const Assignment& given) {
    const int16_t style = placeOf(given.key, glassStyles);
    if (style < 0) return false;
    batch.ChooseGlass(style);
    batch.ChooseGlassStrength(given.choice(batch.cbo.items));
    return true;
}

bool assignToCurtain(cBatch& batch, const Assignment& given) {
    const int16_t style = placeOf(given.key, curtainStyles);
    if (style < 0) return false;
    if (given.ticked() == 0) given.wrongValue("on");
    batch.ChooseCurtain(style);
    return true;
}

bool assignToResize(cBatch& batch, const Assignment& given) {
    if (isKey("Width", given.key))
        batch.ChangeWidth(std::to_string(given.number(1, largestSide)));
    else if (isKey("Height", given.key))
        batch.ChangeHeight(std::to_string(given.number(1, largestSide)));
    else if (isKey("Keep proportions", given.key))
        batch.ChangeKeepProportions(given.ticked());
    else if (isKey("Anti-Alias", given.key))
        batch.ChangeInterpolate(given.ticked());
    else
        return false;
    return true;
}

bool assignToRotate(cBatch& batch, const Assignment& given) {
    if (isKey("Degrees", given.key))
        batch.ChangeDegrees(given.number(lowestDegrees, highestDegrees));
    else if (isKey("Antialiasing", given.key))
        batch.ChangeAntialiasing(given.ticked());
    else
        return false;
    return true;
}

bool assignToPanel(cBatch& batch, const Assignment& given) {
    switch (given.function->panel) {
        case Panel::frBanks:
            return assignToBanks(batch, given);
        case Panel::FrmGlass:
            return assignToGlass(batch, given);
        case Panel::FrmCurtain:
            return assignToCurtain(batch, given);
        case Panel::FrResize:
            return assignToResize(batch, given);
        case Panel::FrRotate:
            return assignToRotate(batch, given);
        case Panel::none:
            break;
    }
    return false;
}

void assign(cBatch& batch, const Assignment& given) {
    const FunctionDef& function = *given.function;
    for (size_t i = 0; i < function.sliders.size(); ++i) {
        const SliderDef& slider = function.sliders[i];
        if (isKey(slider.label, given.key))
            return batch.MoveSlider(static_cast<int16_t>(i), given.number(slider.min, slider.max));
    }
    if (function.option && isKey(function.option->label, given.key))
        return batch.ChangeOption(given.ticked());
    for (int16_t k = 0; k < 2; ++k)
        if (hasSwatch(function, k) && isKey(fmt::format("Color{}", k), given.key))
            return batch.ChangeSwatch(k, given.colour());
    if (assignToPanel(batch, given)) return;

    std::vector<std::string> keys;
    for (const FunctionInput& input : inputsOf(function))
        keys.push_back(input.key);
    refuse(fmt::format("{} has no input '{}'; {}", function.name, given.key,
                       keys.empty() ? std::string("it has none")
                                    : fmt::format("expected one of {}", fmt::join(keys, ", "))));
}

/// The assignments behind "NAME:".
std::vector<Assignment> assignmentsOf(const FunctionDef& function, const std::string& text) {
    std::vector<Assignment> all;
    size_t at = 0;
    while (at <= text.size()) {
        const size_t comma = std::min(text.find(',', at), text.size());
        const std::string one = text.substr(at, comma - at);
        at = comma + 1;
        const size_t equals = one.find('=');
        if (equals == std::string::npos)
            refuse(fmt::format("{}: '{}' is no input; expected KEY=VALUE", function.name, one));
        Assignment given{&function, trimmed(one.substr(0, equals)),
                         trimmed(one.substr(equals + 1))};
        for (const Assignment& other : all)
            if (isKey(other.key, given.key))
                refuse(fmt::format("{}: {} is given twice; expected it once", function.name,
                                   given.key));
        all.push_back(std::move(given));
    }
    return all;
}

/// What a sheet keeps from one visit to the next, as it was before the first.
class SheetMemory {
  public:
    explicit SheetMemory(const cBatch& batch)
        : Col_(batch.Col),
          txtW_(batch.txtW),
          txtH_(batch.txtH),
          chkKeepProportions_(batch.chkKeepProportions),
          chkInterpolate_(batch.chkInterpolate),
          chkAntialiasing_(batch.chkAntialiasing) {}

    /// Each function of the command line starts from these, whatever those before it were given.
    void restore(cBatch& batch) const {
        batch.Col = Col_;
        batch.txtW = txtW_;
        batch.txtH = txtH_;
        batch.chkKeepProportions = chkKeepProportions_;
        batch.chkInterpolate = chkInterpolate_;
        batch.chkAntialiasing = chkAntialiasing_;
        batch.pickX = batch.pickY = 0;
        batch.pickRelX = batch.pickRelY = 0;
    }

  private:
    std::array<uint32_t, 2> Col_;
    std::string txtW_;
    std::string txtH_;
    int16_t chkKeepProportions_;
    int16_t chkInterpolate_;
    int16_t chkAntialiasing_;
};

/// Inputs that no row keeps: all rows of a run take what the sheet shows at the run.
class RunWideInputs {
  public:
    /// \throws Refusal where another function of the run was given another value
    void check(const Assignment& given) {
        const Panel panel = given.function->panel;
        const bool runWide =
            (panel == Panel::frBanks && (isKey("Invert", given.key) || isKey("Kill", given.key))) ||
            (panel == Panel::FrRotate && isKey("Degrees", given.key));
        if (!runWide) return;
        const auto [known, isNew] = values_.emplace(lowerCase(given.key), meaningOf(given));
        if (!isNew && known->second != meaningOf(given))
            refuse(
                fmt::format("{}: {} holds for the whole run and was '{}' before; expected one "
                            "value",
                            given.function->name, given.key, known->second));
    }

  private:
    /// The value in one spelling: "gr" is "rg", and "+10" is "10".
    static std::string meaningOf(const Assignment& given) {
        if (isKey("Degrees", given.key))
            return std::to_string(given.number(lowestDegrees, highestDegrees));
        std::string channels;
        for (const char channel : {'r', 'g', 'b'})
            if (given.hasChannel(channel)) channels += channel;
        return channels;
    }

    std::map<std::string, std::string> values_;
};

void applyArgument(cBatch& batch, const std::string& argument, RunWideInputs& runWide) {
    const size_t colon = argument.find(':');
    const std::string name = trimmed(argument.substr(0, colon));
    const FunctionDef* function = findFunction(std::string_view(name));
    if (function == nullptr || function->treeIndex == 0)
        refuse(fmt::format("unknown function '{}'; expected a name of --list-functions", name));
    std::vector<Assignment> all;
    if (colon != std::string::npos) all = assignmentsOf(*function, argument.substr(colon + 1));
    for (const Assignment& given : all)
        runWide.check(given);
    if ((function->panel == Panel::FrmGlass || function->panel == Panel::FrmCurtain) &&
        all.size() > 1)
        refuse(fmt::format("{}: one style excludes the others; expected one", function->name));

    batch.SelectNode(function->treeIndex);
    // The point first: picking it sets the first colour, which an input may set otherwise.
    if (function->picksPoint) {
        float x = batch.pickX;
        float y = batch.pickY;
        const auto isPoint = [&](const Assignment& given) {
            const bool isX = isKey("X", given.key);
            if (!isX && !isKey("Y", given.key)) return false;
            (isX ? x : y) =
                static_cast<float>(given.number(0, (isX ? batch.workWidth : batch.workHeight) - 1));
            return true;
        };
        if (std::erase_if(all, isPoint) > 0) batch.PickPoint(x, y);
    }
    for (const Assignment& given : all)
        assign(batch, given);
    batch.AddFunction(std::string(function->name));
}

void addFunctionList(cBatch& batch, const std::string& file) {
    const auto refuseList = [&](const std::string& why) {
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--functions: '{}' is no function list: {}", file, why));
    };
    const std::string unreadable = whyNotReadable(file);
    if (!unreadable.empty()) refuseList(unreadable);
    std::vector<FunctionRecord> records;
    try {
        records = readFunctionList(file);
    } catch (const std::system_error& failure) {
        refuseList(failure.code().message());
    }
    if (records.empty() || std::filesystem::file_size(file) % FunctionRecord::bytesOnDisk != 0)
        refuseList(fmt::format("expected records of {} bytes", FunctionRecord::bytesOnDisk));
    for (size_t i = 0; i < records.size(); ++i) {
        int32_t id = -1;
        attempt([&] { id = toInteger32(records[i].id); });
        if (id < 0 || id > highestFunctionId)
            refuseList(fmt::format("record {} names no function; expected a number from 0 to {}",
                                   i + 1, highestFunctionId));
        batch.AppendRecord(records[i]);
    }
}

}  // namespace

std::vector<FunctionInput> inputsOf(const FunctionDef& function) {
    std::vector<FunctionInput> inputs;
    for (const SliderDef& slider : function.sliders)
        inputs.push_back({std::string(slider.label),
                          fmt::format("{} to {}", slider.min, slider.max),
                          std::to_string(slider.initial)});
    if (function.option)
        inputs.push_back({std::string(function.option->label), "on or off",
                          function.option->initial ? "on" : "off"});
    for (int k = 0; k < 2; ++k)
        if (hasSwatch(function, k))
            inputs.push_back({fmt::format("Color{}", k), "RRGGBB", k == 0 ? "" : "C00000"});
    if (function.picksPoint) {
        // With a swatch the point does nothing but choose its colour.
        const bool choosesColour = function.swatches != Swatches::none;
        const char* use = choosesColour ? ", where Color0 is taken from" : "";
        const char* initial = choosesColour ? "" : "0";
        inputs.push_back({"X", fmt::format("0 to 199{}", use), initial});
        inputs.push_back({"Y", fmt::format("0 to 173{}", use), initial});
    }
    switch (function.panel) {
        case Panel::frBanks:
            for (std::string_view column : bankColumns)
                inputs.push_back({std::string(column), "R, G or B", std::string(1, column[0])});
            inputs.push_back({"Invert", "letters of rgb", ""});
            inputs.push_back({"Kill", "letters of rgb", ""});
            break;
        case Panel::FrmGlass:
            for (std::string_view style : glassStyles)
                inputs.push_back({std::string(style),
                                  style == "Slanting" ? "Light or Tight" : "Large, Light or Tight",
                                  style == "Slanting" ? "Light" : ""});
            break;
        case Panel::FrmCurtain:
            for (std::string_view style : curtainStyles)
                inputs.push_back({std::string(style), "on", style == "Horizontal" ? "on" : ""});
            break;
        case Panel::FrResize:
            inputs.push_back({"Width", fmt::format("1 to {}", largestSide), "100"});
            inputs.push_back(
                {"Height", fmt::format("1 to {}, with Keep proportions off", largestSide), "100"});
            inputs.push_back({"Keep proportions", "on or off", "on"});
            inputs.push_back({"Anti-Alias", "on or off", "on"});
            break;
        case Panel::FrRotate:
            inputs.push_back({"Degrees", "-180 to 180", "0"});
            inputs.push_back({"Antialiasing", "on or off", "off"});
            break;
        case Panel::none:
            break;
    }
    return inputs;
}

void addFunctions(cBatch& batch, const CommandLine& line) {
    const SheetMemory sheet(batch);
    RunWideInputs runWide;
    for (const FunctionSource& source : line.functions) {
        sheet.restore(batch);
        if (source.kind == FunctionSource::Kind::list)
            addFunctionList(batch, source.value);
        else
            applyArgument(batch, source.value, runWide);
    }
    if (line.degrees) batch.sbDegrees = *line.degrees;
    for (size_t i = 0; i < 3; ++i) {
        const char letter = "rgb"[i];
        if (line.invert.find(letter) != std::string::npos) batch.chkInvt[i] = 1;
        if (line.kill.find(letter) != std::string::npos) batch.chkKill[i] = 1;
    }
}

}  // namespace tessarine
