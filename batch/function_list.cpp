#include <optional>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "batch/texts.h"
#include "pixels/byte_files.h"

// The function list behind the tray's toolbar. A list takes its names from the chain and its
// values from the rows at the same ordinals, so an edited chain is written as the run takes it:
// rows in the order in which they were added. Nothing here brings the two together.

namespace tessarine {

void cBatch::SaveFunctionList() {
    if (LSelectedFunctions.empty()) return;
    const std::optional<std::string> path = platform_.saveDialog("Function List(*.qfk)|*.qfk");
    if (!path) return;
    std::vector<FunctionRecord> records;
    // A column that does not convert leaves what the record before has in its place.
    FunctionRecord record;
    for (size_t i = 0; i < LSelectedFunctions.size(); ++i) {
        record.name = LSelectedFunctions[i].text;
        if (i < Ltray.size()) {
            const TrayRow& row = Ltray[i];
            record.id = std::to_string(row.Tag);
            for (int k = 0; k < 3; ++k) {
                attempt([&] {
                    record.parameters[static_cast<size_t>(k)] = toInteger32(row.column(k + 1));
                });
            }
            for (int k = 0; k < 2; ++k) {
                attempt([&] {
                    record.colours[static_cast<size_t>(k)] = toInteger32(row.column(k + 4));
                });
            }
            attempt([&] { record.option = toTruth(row.column(6)) ? -1 : 0; });
            record.style = row.column(7);
            attempt([&] { record.x = toSingle(row.column(8)); });
            attempt([&] { record.y = toSingle(row.column(9)); });
        }
        records.push_back(record);
    }
    attemptOnFile([&] { writeFunctionList(*path, records); });
}

void cBatch::AppendRecord(const FunctionRecord& record) {
    attempt([&] { functionId = toInteger32(record.id); });
    funcParam = record.parameters;
    funcColor = record.colours;
    funcOption = record.option != 0;
    funcStyle = record.style;
    pickX = record.x;
    pickY = record.y;
    appendRow(record.name);
}

void cBatch::LoadFunctionList() {
    const std::optional<std::string> path = platform_.openDialog("Functions List(*.qfk)|*.qfk");
    if (path) OpenFunctionList(*path);
}

void cBatch::OpenFunctionList(const std::string& path) {
    if (lowerCase(extensionOf(path)) != "qfk") {
        platform_.messageBox("This is  not a valid Function List!", Icon::critical,
                             "Invalid Functions List");
        return;
    }
    ClearFunctions();
    std::vector<FunctionRecord> records;
    int16_t count = 0;
    attemptOnFile([&] {
        records = readFunctionList(path);
        count = toInteger16(static_cast<double>(records.size()));
    });
    for (int32_t i = 0; i < count; ++i)
        AppendRecord(records[static_cast<size_t>(i)]);
    platform_.changed("LSelectedFunctions");
    if (!LSelectedFunctions.empty()) RebuildChainAndDraw();
}

}  // namespace tessarine
