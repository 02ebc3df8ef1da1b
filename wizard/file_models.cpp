#include "wizard/file_models.h"

#include <algorithm>
#include <unordered_map>

#include <QCoreApplication>
#include <QMimeData>

#include "wizard/file_names.h"
#include "wizard/file_types.h"

namespace tessarine {

namespace {

/// Process and rows of a drag out of lvFolder.
constexpr const char* rowsFormat = "application/x-tessarine-folder-rows";

template <class Rows>
std::vector<std::string> pathsOf(const Rows& rows) {
    std::vector<std::string> paths;
    paths.reserve(rows.size());
    for (const auto& row : rows)
        paths.push_back(row.Tag);
    return paths;
}

/// Rows from the first to the last.
struct Run {
    int first;
    int last;
};

/// More runs than these are shown anew faster than removed one by one.
constexpr size_t mostRuns = 200;

/// The rows that have left; none where others came, or the order has changed.
std::vector<Run> runsGone(const std::vector<std::string>& before,
                          const std::vector<std::string>& now) {
    std::vector<Run> runs;
    size_t kept = 0;
    for (int row = 0; row < int(before.size()); ++row) {
        if (kept < now.size() && before[size_t(row)] == now[kept])
            ++kept;
        else if (!runs.empty() && runs.back().last == row - 1)
            runs.back().last = row;
        else
            runs.push_back({row, row});
    }
    if (kept < now.size()) runs.clear();
    return runs;
}

}  // namespace

std::vector<int32_t> draggedRows(const QMimeData& data) {
    const QList<QByteArray> numbers = data.data(rowsFormat).split(' ');
    std::vector<int32_t> rows;
    if (numbers.first() != QByteArray::number(QCoreApplication::applicationPid())) return rows;
    for (qsizetype i = 1; i < numbers.size(); ++i)
        rows.push_back(numbers[i].toInt());
    return rows;
}

void FileModel::follow() {
    std::vector<std::string> now = paths();
    // What is only removed leaves the current row and what is selected beside it alone.
    if (const std::vector<Run> gone = runsGone(shown_, now);
        !gone.empty() && gone.size() <= mostRuns) {
        for (auto run = gone.rbegin(); run != gone.rend(); ++run) {
            beginRemoveRows({}, run->first, run->last);
            shown_.erase(shown_.begin() + run->first, shown_.begin() + run->last + 1);
            endRemoveRows();
        }
        return;
    }
    const size_t shorter = std::min(now.size(), shown_.size());
    size_t head = 0;
    while (head < shorter && now[head] == shown_[head])
        ++head;
    size_t tail = 0;
    while (tail < shorter - head && now[now.size() - 1 - tail] == shown_[shown_.size() - 1 - tail])
        ++tail;

    // Rows that came in one piece leave selection and scrolling alone.
    if (head + tail == shown_.size() && shown_.size() < now.size()) {
        beginInsertRows({}, int(head), int(now.size() - tail) - 1);
        shown_ = std::move(now);
        endInsertRows();
    } else if (head == now.size() && head == shown_.size()) {
        if (head > 0) emit dataChanged(index(0, 0), index(int(head) - 1, columnCount() - 1));
    } else {
        beginResetModel();
        shown_ = std::move(now);
        endResetModel();
    }
}

int FileModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(shown_.size());
}

QVariant FileModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::DisplayRole) return heading(section);
    if (role == Qt::TextAlignmentRole) return int(alignment(section) | Qt::AlignVCenter);
    return {};
}

bool FileModel::has(const QModelIndex& index) const {
    return index.isValid() && size_t(index.row()) < rows();
}

QVariant FileModel::data(const QModelIndex& index, int role) const {
    if (!has(index)) return {};
    const auto row = size_t(index.row());
    if (role == Qt::DisplayRole) return shownName(text(row, index.column()));
    if (role == Qt::TextAlignmentRole) return int(alignment(index.column()) | Qt::AlignVCenter);
    // A text may be cut short; the name's column tells the whole path.
    if (role == Qt::ToolTipRole)
        return plainToolTip(shownName(index.column() == 0 ? path(row) : text(row, index.column())));
    if (role == Qt::DecorationRole && index.column() == 0) return fileTypeIcon(icon(row));
    return {};
}

Qt::ItemFlags FileModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

// ---- lvFolder ----

void FolderModel::followFolder() {
    if (!sorting_) follow();
}

int FolderModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 3; }

std::vector<std::string> FolderModel::paths() const { return pathsOf(batch_.lvFolder); }

QString FolderModel::heading(int column) const {
    static const char* const headings[] = {"File Name", "Size", "Type"};
    return headings[column];
}

const std::string& FolderModel::text(size_t row, int column) const {
    const FolderRow& file = batch_.lvFolder[row];
    return column == 0 ? file.text : column == 1 ? file.column1 : file.column2;
}

QVariant FolderModel::data(const QModelIndex& index, int role) const {
    if (role == Qt::CheckStateRole && index.column() == 0 && has(index))
        return batch_.lvFolder[size_t(index.row())].checked ? Qt::Checked : Qt::Unchecked;
    return FileModel::data(index, role);
}

bool FolderModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || !has(index)) return false;
    batch_.CheckRows({index.row()}, value.toInt() == Qt::Checked);
    return true;
}

Qt::ItemFlags FolderModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = FileModel::flags(index);
    if (!index.isValid()) return flags;
    return flags | Qt::ItemIsDragEnabled |
           (index.column() == 0 ? Qt::ItemIsUserCheckable : Qt::NoItemFlags);
}

void FolderModel::sort(int column, Qt::SortOrder order) {
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const std::vector<std::string> before = std::move(shown_);
    sorting_ = true;
    batch_.SortFolder(column, order == Qt::DescendingOrder);
    sorting_ = false;
    shown_ = paths();
    std::unordered_map<std::string, int> places;
    for (size_t i = 0; i < shown_.size(); ++i)
        places.emplace(shown_[i], int(i));
    const QModelIndexList from = persistentIndexList();
    QModelIndexList to;
    for (const QModelIndex& old : from) {
        const auto place = places.find(before[size_t(old.row())]);
        to.append(place == places.end() ? QModelIndex() : index(place->second, old.column()));
    }
    changePersistentIndexList(from, to);
    emit layoutChanged({}, VerticalSortHint);
}

QStringList FolderModel::mimeTypes() const { return {rowsFormat, "text/uri-list"}; }

QMimeData* FolderModel::mimeData(const QModelIndexList& indexes) const {
    std::vector<int> rows;
    for (const QModelIndex& index : indexes)
        if (index.column() == 0 && has(index)) rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    QList<QUrl> urls;
    QByteArray numbers = QByteArray::number(QCoreApplication::applicationPid());
    for (const int row : rows) {
        numbers += " " + QByteArray::number(row);
        urls.append(urlOf(path(size_t(row))));
    }
    auto* data = new QMimeData;
    data->setData(rowsFormat, numbers);
    data->setUrls(urls);
    return data;
}

// ---- lvSelected ----

int BasketModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 2; }

std::vector<std::string> BasketModel::paths() const { return pathsOf(batch_.lvSelected); }

QString BasketModel::heading(int column) const {
    return column == 0 ? "File Name" : "Parent Folder";
}

const std::string& BasketModel::text(size_t row, int column) const {
    const BasketItem& item = batch_.lvSelected[row];
    return column == 0 ? item.text : item.column1;
}

}  // namespace tessarine
