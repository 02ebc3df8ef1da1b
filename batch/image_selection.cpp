#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <system_error>

#include "batch/accepted_files.h"
#include "batch/batch.h"
#include "batch/items.h"
#include "batch/natural_order.h"
#include "batch/texts.h"

// The folder in which pictures are chosen, and the list of its pictures.

namespace tessarine {

namespace {

namespace fs = std::filesystem;

/// Kilobytes to one decimal, halves to even, without a decimal that is 0.
std::string sizeText(uint64_t bytes) {
    const auto tenths = std::llrint(static_cast<double>(bytes) / 1024 * 10);
    std::string text = std::to_string(tenths / 10);
    if (tenths % 10 != 0) text += "." + std::to_string(tenths % 10);
    return text + " KB";
}

bool precedes(const FolderRow& a, const FolderRow& b, int32_t column) {
    switch (column) {
        case 0:
            return comesBefore(a.text, b.text);
        case 1:
            return a.bytes < b.bytes;
        default:
            return comesBefore(a.column2, b.column2);
    }
}

}  // namespace

void cBatch::ChangeFolder(const std::string& path) {
    FT = path;
    Fil.path = withoutSeparatorAtEnd(path);
    Fil.names = fileNamesIn(Fil.path);
    startupRecord.lastFolder = path;
    showStatus(5, "Current Directory : " + path);
    ListFiles();
}

void cBatch::ListFiles() {
    lvFolder.clear();
    int32_t count = 0;
    std::map<std::string, std::string> typeNames;
    for (const std::string& name : Fil.names) {
        const std::string path = joined(Fil.path, name);
        if (!isAcceptedPicture(path)) continue;
        ++count;
        FolderRow row;
        row.text = name;
        row.smallIcon = lowerCase(extensionOf(path));
        row.Tag = path;
        std::error_code failure;
        const uintmax_t bytes = fs::file_size(path, failure);
        if (!failure) {
            row.bytes = bytes;
            row.column1 = sizeText(row.bytes);
        }
        std::string& typeName = typeNames[row.smallIcon];
        if (typeName.empty()) typeName = platform_.fileTypeName(row.smallIcon);
        row.column2 = typeName;
        lvFolder.push_back(std::move(row));
    }
    arrangeFolder();
    platform_.changed("lvFolder");
    showStatus(4, "Selected File(s):" + std::to_string(count));
}

void cBatch::SortFolder(int32_t column, bool descending) {
    lvFolderColumn = column;
    lvFolderDescending = descending;
    arrangeFolder();
    platform_.changed("lvFolder");
}

void cBatch::arrangeFolder() {
    if (lvFolderColumn < 0) return;
    // Rows that are alike keep the order in which they stand, in both directions.
    std::stable_sort(lvFolder.begin(), lvFolder.end(),
                     [this](const FolderRow& a, const FolderRow& b) {
                         return lvFolderDescending ? precedes(b, a, lvFolderColumn)
                                                   : precedes(a, b, lvFolderColumn);
                     });
}

void cBatch::CheckRows(const std::vector<int32_t>& rows, bool checked) {
    for (const int32_t row : rows)
        attempt([&] { itemAt(lvFolder, row).checked = checked; });
    platform_.changed("lvFolder");
}

void cBatch::CheckAll(bool checked) {
    for (FolderRow& row : lvFolder)
        row.checked = checked;
    platform_.changed("lvFolder");
}

void cBatch::ClickFolder(const std::vector<int32_t>& selected) {
    if (selected.size() != 1) return;
    attempt([&] { ShowImageDetails(itemAt(lvFolder, selected.front()).Tag); });
}

void cBatch::DropOnFolder(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    const std::string& first = paths.front();
    const std::string folder = platform_.folderExists(first) ? first : folderOf(first);
    if (!platform_.folderExists(folder)) return;
    FT = withoutSeparatorAtEnd(folder);
    platform_.changed("FT");
}

}  // namespace tessarine
