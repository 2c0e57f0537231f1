#pragma once

#include <QAbstractTableModel>
#include <QIcon>

#include <functional>

class MVIgnoredApps;

/// The rows of the built-in entries of the ignore list: whether each is enabled, which can be
/// edited, its icon, its displayed name, and what it is. Icons are asked for only when they are
/// drawn. Main thread only.
class BuiltInIgnoredModel final : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { enabled, icon, name, description, columns };
    using Icons = std::function<QIcon(const QString& name)>;

    /// `ignored` must outlive the model.
    BuiltInIgnoredModel(MVIgnoredApps& ignored, Icons icons);

    /// All rows may be different now. Which names there are never changes.
    void reload();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  private:
    MVIgnoredApps& ignored_;
    const Icons icons_;
};
