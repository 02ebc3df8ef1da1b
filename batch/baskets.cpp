#include <algorithm>
#include <unordered_set>

#include "batch/accepted_files.h"
#include "batch/batch.h"
#include "batch/items.h"
#include "batch/texts.h"

// How pictures come into the Image Basket and out of it again. By key and button a path is a
// duplicate where it is the same to the letter; what is dropped is compared in lower case, and
// its row shows the name without extension and the file's own folder.

namespace tessarine {

namespace {

BasketItem droppedItem(const std::string& path) {
    const std::string extension = extensionOf(path);
    std::string name = fileNameOf(path);
    if (name.find('.') != std::string::npos) name.resize(name.size() - extension.size() - 1);
    return {name, lowerCase(extension), path, folderOf(path)};
}

/// The paths in a basket, each seen through `form`.
template <class Form>
std::unordered_set<std::string> pathsOf(const std::vector<BasketItem>& basket, Form form) {
    std::unordered_set<std::string> paths;
    paths.reserve(basket.size() * 2);
    for (const BasketItem& item : basket)
        paths.insert(form(item.Tag));
    return paths;
}

}  // namespace

void cBatch::AddSelectedToBasket(const std::vector<int32_t>& rows) {
    const auto asItIs = [](const std::string& path) { return path; };
    std::unordered_set<std::string> paths = pathsOf(lvSelected, asItIs);
    int32_t duplicates = 0;
    for (const int32_t index : rows) {
        attempt([&] {
            const FolderRow& row = itemAt(lvFolder, index);
            if (!paths.insert(row.Tag).second)
                ++duplicates;
            else
                lvSelected.push_back({row.text, row.smallIcon, row.Tag, Fil.path});
        });
    }
    tellAdded(duplicates);
}

void cBatch::AddCheckedToBasket() {
    std::vector<int32_t> rows;
    for (size_t i = 0; i < lvFolder.size(); ++i)
        if (lvFolder[i].checked) rows.push_back(static_cast<int32_t>(i));
    AddSelectedToBasket(rows);
}

void cBatch::DropRowsOnBasket(const std::vector<int32_t>& rows) {
    std::vector<std::string> files;
    for (const int32_t index : rows)
        attempt([&] { files.push_back(itemAt(lvFolder, index).Tag); });
    addDropped(files);
}

void cBatch::DropOnBasket(const std::vector<std::string>& paths) {
    std::vector<std::string> files;
    for (const std::string& dropped : paths) {
        // Some file managers end a folder's path in a separator.
        const std::string path = withoutSeparatorAtEnd(dropped);
        if (platform_.folderExists(path)) {
            for (const std::string& name : fileNamesIn(path))
                if (isAcceptedPicture(name)) files.push_back(joined(path, name));
        } else if (const std::string extension = lowerCase(extensionOf(path));
                   extension == "qpkl") {
            OpenPictureList(path);
        } else if (extension == "qfk") {
            OpenFunctionList(path);
        } else if (isAcceptedPicture(path) && platform_.fileExists(path)) {
            files.push_back(path);
        }
    }
    if (!files.empty()) addDropped(files);
}

void cBatch::addDropped(const std::vector<std::string>& files) {
    std::unordered_set<std::string> paths = pathsOf(lvSelected, lowerCase);
    int32_t duplicates = 0;
    for (const std::string& file : files) {
        if (!paths.insert(lowerCase(file)).second)
            ++duplicates;
        else
            lvSelected.push_back(droppedItem(file));
    }
    tellAdded(duplicates);
}

void cBatch::tellAdded(int32_t duplicates) {
    // The list shows what came in before the message waits for an answer.
    platform_.changed("lvSelected");
    if (duplicates > 0) {
        platform_.messageBox(std::to_string(duplicates) +
                                 " File(s) already existed in the Basket. There were not added!",
                             Icon::information, "Tessarine");
    }
    showBasketCount();
}

void cBatch::showBasketCount() {
    showStatus(3, "Basket: " + std::to_string(lvSelected.size()) + " file(s)");
}

void cBatch::RemoveSelected(const std::vector<int32_t>& rows) {
    std::vector<bool> leaves(lvSelected.size());
    for (const int32_t row : rows)
        attempt([&] { itemAt(lvSelected, row), leaves[static_cast<size_t>(row)] = true; });
    size_t kept = 0;
    for (size_t i = 0; i < lvSelected.size(); ++i) {
        if (leaves[i]) continue;
        if (kept != i) lvSelected[kept] = std::move(lvSelected[i]);
        ++kept;
    }
    lvSelected.resize(kept);
    platform_.changed("lvSelected");
    showBasketCount();
}

void cBatch::RemoveAll() {
    lvSelected.clear();
    platform_.changed("lvSelected");
    showBasketCount();
}

void cBatch::LoadPictureList() {
    LoadList(platform_, lvSelected);
    showBasketCount();
}

void cBatch::OpenPictureList(const std::string& path) {
    tessarine::OpenPictureList(platform_, path, lvSelected);
    showBasketCount();
}

void cBatch::SavePictureList() {
    SaveList();
    showBasketCount();
}

void cBatch::ClickBasket(const std::vector<int32_t>& selected) {
    if (selected.size() != 1) return;
    attempt([&] { ShowImageDetails(itemAt(lvSelected, selected.front()).Tag); });
}

}  // namespace tessarine
