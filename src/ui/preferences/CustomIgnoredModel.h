#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QStringList>

#include <functional>

class MVIgnoredApps;

/// The rows of the user's own names in the ignore list: an icon and the displayed name. Icons are
/// asked for only when they are drawn. Main thread only.
class CustomIgnoredModel final : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { icon, name, columns };
    using Icons = std::function<QIcon(const QString& name)>;

    /// `ignored` must outlive the model.
    CustomIgnoredModel(const MVIgnoredApps& ignored, Icons icons);

    /// Takes the present names over. Rows whose names are the same are kept, with their selection.
    void reload();

    /// The process name of a row.
    const QString& nameAt(int row) const { return names_[row]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    const MVIgnoredApps& ignored_;
    const Icons icons_;
    QStringList names_;
};
