#pragma once

#include <string>
#include <vector>

#include <QAbstractTableModel>

#include "batch/batch.h"

namespace tessarine {

/// The rows of lvFolder that are being dragged, from 0; empty for what comes from elsewhere,
/// another running program of this kind included.
std::vector<int32_t> draggedRows(const QMimeData& data);

/// A list of the program's as a view shows it. The rows are the program's own; only their paths
/// are kept here, to tell what became of the rows when the list has changed.
class FileModel : public QAbstractTableModel {
  public:
    explicit FileModel(cBatch& batch) : batch_(batch) {}

    /// Tells the view how the list has changed since it was last shown.
    void follow();

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  protected:
    virtual std::vector<std::string> paths() const = 0;
    virtual QString heading(int column) const = 0;
    virtual Qt::Alignment alignment(int) const { return Qt::AlignLeading; }
    virtual size_t rows() const = 0;
    virtual const std::string& text(size_t row, int column) const = 0;
    virtual const std::string& icon(size_t row) const = 0;
    virtual const std::string& path(size_t row) const = 0;
    /// Whether the program's list still has the row; it may be ahead of what is shown.
    bool has(const QModelIndex& index) const;

    cBatch& batch_;
    std::vector<std::string> shown_;
};

/// lvFolder as rows with check boxes, sorted by its headings.
class FolderModel : public FileModel {
  public:
    using FileModel::FileModel;

    /// As FileModel::follow; does nothing while sort() is at work.
    void followFolder();

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    void sort(int column, Qt::SortOrder order) override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    QStringList mimeTypes() const override;

  protected:
    std::vector<std::string> paths() const override;
    QString heading(int column) const override;
    Qt::Alignment alignment(int column) const override {
        return column == 1 ? Qt::AlignTrailing : Qt::AlignLeading;
    }
    size_t rows() const override { return batch_.lvFolder.size(); }
    const std::string& text(size_t row, int column) const override;
    const std::string& icon(size_t row) const override { return batch_.lvFolder[row].smallIcon; }
    const std::string& path(size_t row) const override { return batch_.lvFolder[row].Tag; }

  private:
    bool sorting_ = false;
};

/// lvSelected as rows.
class BasketModel : public FileModel {
  public:
    using FileModel::FileModel;

    int columnCount(const QModelIndex& parent = {}) const override;

  protected:
    std::vector<std::string> paths() const override;
    QString heading(int column) const override;
    size_t rows() const override { return batch_.lvSelected.size(); }
    const std::string& text(size_t row, int column) const override;
    const std::string& icon(size_t row) const override { return batch_.lvSelected[row].smallIcon; }
    const std::string& path(size_t row) const override { return batch_.lvSelected[row].Tag; }
};

}  // namespace tessarine
