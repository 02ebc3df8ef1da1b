#include <optional>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "batch/texts.h"
#include "pixels/byte_files.h"

namespace tessarine {

namespace {

constexpr const char* pictureListFilter = "Picture List(*.qpkl)|*.qpkl";

BasketItem itemOf(const std::string& path) {
    const std::string extension = lowerCase(extensionOf(path));
    const std::string file = fileNameOf(path);
    BasketItem item;
    // The point is taken off with the extension, and so is the last character of a name that has
    // neither.
    item.text = file.substr(0, file.size() - extension.size() - 1);
    item.smallIcon = extension;
    item.Tag = path;
    item.column1 = folderOf(path);
    return item;
}

}  // namespace

void cBatch::SaveList() {
    if (lvSelected.empty()) return;
    const std::optional<std::string> path = platform_.saveDialog(pictureListFilter);
    if (!path) return;
    std::vector<std::string> pictures;
    for (const BasketItem& item : lvSelected)
        pictures.push_back(item.Tag);
    attemptOnFile([&] { writePictureList(*path, pictures); });
}

void LoadList(Platform& dialog, std::vector<BasketItem>& list) {
    const std::optional<std::string> path = dialog.openDialog(pictureListFilter);
    if (path) OpenPictureList(dialog, *path, list);
}

void OpenPictureList(Platform& dialog, const std::string& path, std::vector<BasketItem>& list) {
    if (lowerCase(extensionOf(path)) != "qpkl") {
        dialog.messageBox("This is  not a valid picture List!", Icon::critical,
                          "INVALID PICTURE LIST");
        return;
    }
    std::vector<std::string> pictures;
    int16_t count = 0;
    attemptOnFile([&] {
        pictures = readPictureList(path);
        count = toInteger16(static_cast<double>(pictures.size()));
    });
    list.clear();
    int32_t missing = 0;
    for (int32_t i = 0; i < count; ++i) {
        const std::string& picture = pictures[static_cast<size_t>(i)];
        if (dialog.fileExists(picture)) {
            list.push_back(itemOf(picture));
        } else {
            ++missing;
        }
    }
    dialog.changed("lvSelected");
    if (missing > 0) {
        dialog.messageBox(
            std::to_string(missing) +
                " files in this picture List are no longer valid! They will be not listed.",
            Icon::critical, "INVALID FILE ASSOCIATIONS!");
    }
}

}  // namespace tessarine
