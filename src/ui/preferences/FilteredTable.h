#pragma once

#include <QSortFilterProxyModel>
#include <QWidget>

class IgnoredAppsTable;
class QLabel;
class QLineEdit;

/// A table of ignored programs below a title, and beside that a field that filters it by name while
/// it has many rows. Main thread only.
class FilteredTable final : public QWidget {
    Q_OBJECT

  public:
    /// Tables with more rows than this have the field.
    static constexpr int mostWithoutFilter = 20;

    /// The column after `iconColumn` of `rows`, which must outlive this, has the names. `title` has
    /// a mnemonic.
    FilteredTable(const QString& title, QAbstractItemModel& rows, int iconColumn);

    IgnoredAppsTable& table() const noexcept { return *table_; }
    QLineEdit& filter() const noexcept { return *filter_; }

    /// The selected rows of the model, in ascending order.
    [[nodiscard]] QList<int> selectedRows() const;

  private:
    void showFilterIfUseful();

    QSortFilterProxyModel shown_;
    QLineEdit* const filter_;
    IgnoredAppsTable* const table_;
};
