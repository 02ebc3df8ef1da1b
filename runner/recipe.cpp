#include "runner/recipe.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "batch/texts.h"
#include "pixels/failures.h"
#include "runner/content_hash.h"
#include "runner/json_text.h"

namespace tessarine {

namespace {

using Json = nlohmann::ordered_json;

/// Diffuse and Noise: the only functions of the catalogue whose result hangs on the number.
bool drawsRandomNumbers(const TrayRow& row) { return row.Tag == 5 || row.Tag == 37; }

std::string letters(const std::array<int16_t, 3>& ticked) {
    std::string text;
    for (size_t i = 0; i < ticked.size(); ++i)
        if (ticked[i] != 0) text += "rgb"[i];
    return text;
}

void tick(std::array<int16_t, 3>& boxes, const Json& json) {
    const auto text = json.get<std::string>();
    for (size_t i = 0; i < boxes.size(); ++i)
        boxes[i] = text.find("rgb"[i]) != std::string::npos ? 1 : 0;
}

/// A part of a picture, which the functions take as it is.
float pointOf(const Json& json) {
    constexpr double farthest = 1e9;
    const auto part = json.get<double>();
    if (!(std::abs(part) <= farthest)) throw StatementFailed("a point lies outside of everything");
    return static_cast<float>(part);
}

template <class Numbers>
void takeNumbers(Numbers& numbers, const Json& json) {
    for (size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = numberOfJson<int32_t>(json.at(i));
}

}  // namespace

Json chainAsJson(const cBatch& batch) {
    Json rows = Json::array();
    for (const TrayRow& row : batch.Ltray) {
        Json columns = Json::array();
        for (const std::string& column : row.columns)
            columns.push_back(jsonOfText(column));
        rows.push_back(
            {{"name", jsonOfText(row.text)}, {"id", row.Tag}, {"columns", std::move(columns)}});
    }
    Json before = {{"numbers", batch.funcParam},
                   {"colours", batch.funcColor},
                   {"option", batch.funcOption},
                   {"style", jsonOfText(batch.funcStyle)},
                   {"point", {batch.pickRelX, batch.pickRelY}},
                   {"preview", {batch.iDst.width(), batch.iDst.height()}}};
    return {{"rows", std::move(rows)},
            {"degrees", batch.sbDegrees},
            {"invert", letters(batch.chkInvt)},
            {"kill", letters(batch.chkKill)},
            {"before", std::move(before)}};
}

void takeChain(cBatch& batch, const Json& json) {
    constexpr size_t mostRows = std::numeric_limits<int16_t>::max();
    const Json& rows = json.at("rows");
    if (rows.size() > mostRows)
        throw StatementFailed(
            fmt::format("these are {} functions; expected at most {}", rows.size(), mostRows));
    batch.Ltray.clear();
    batch.LSelectedFunctions.clear();
    for (const Json& each : rows) {
        TrayRow row;
        row.text = textOfJson(each.at("name"));
        row.Tag = numberOfJson<int32_t>(each.at("id"), 0, highestFunctionId);
        for (size_t k = 0; k < row.columns.size(); ++k)
            row.columns[k] = textOfJson(each.at("columns").at(k));
        batch.Ltray.push_back(row);
        batch.LSelectedFunctions.push_back({row.text, static_cast<int32_t>(batch.Ltray.size())});
    }
    batch.sbDegrees = numberOfJson<int16_t>(json.at("degrees"), lowestDegrees, highestDegrees);
    tick(batch.chkInvt, json.at("invert"));
    tick(batch.chkKill, json.at("kill"));
    const Json& before = json.at("before");
    takeNumbers(batch.funcParam, before.at("numbers"));
    takeNumbers(batch.funcColor, before.at("colours"));
    batch.funcOption = before.at("option").get<bool>();
    batch.funcStyle = textOfJson(before.at("style"));
    batch.pickRelX = pointOf(before.at("point").at(0));
    batch.pickRelY = pointOf(before.at("point").at(1));
    constexpr int32_t longestSide = 32767;
    const auto width = numberOfJson<int32_t>(before.at("preview").at(0), 1, longestSide);
    const auto height = numberOfJson<int32_t>(before.at("preview").at(1), 1, longestSide);
    if (width != batch.iDst.width() || height != batch.iDst.height())
        batch.iDst.setSize(width, height);
}

Json metadataAsJson(const MetadataWishes& wishes) {
    return {{"autoOrient", wishes.autoOrient},
            {"keep", wishes.keep},
            {"stripLocation", wishes.stripLocation}};
}

MetadataWishes metadataOfJson(const Json& json) {
    return {json.at("autoOrient").get<bool>(), json.at("keep").get<bool>(),
            json.at("stripLocation").get<bool>()};
}

Recipe::Recipe(const cBatch& batch, const MetadataWishes& metadata)
    : hash_(hashOfText(oneLine({{"version", TESSARINE_VERSION},
                                {"format", batch.cboFormat.index},
                                {"metadata", metadataAsJson(metadata)},
                                {"chain", chainAsJson(batch)}}))),
      drawsRandomNumbers_(std::any_of(batch.Ltray.begin(), batch.Ltray.end(), drawsRandomNumbers)) {
}

std::string Recipe::keyOf(const PictureTask& task) const {
    return hashOfText(hash_ + " " + lowerCase(extensionOf(task.input)) + " " +
                      (drawsRandomNumbers_ ? std::to_string(task.number) : std::string()));
}

}  // namespace tessarine
