#pragma once

#include <QTableView>

/// A table of ignored programs, in the theme's colours. Rows are selected as a whole; Space checks
/// and unchecks the current one where rows can be checked. Main thread only.
class IgnoredAppsTable final : public QTableView {
    Q_OBJECT

  public:
    explicit IgnoredAppsTable(QWidget* parent = nullptr);

    /// Sets the model and the column of icons; the one after that has the names. Call it once.
    void setRows(QAbstractItemModel& model, int iconColumn);

  Q_SIGNALS:
    /// The user has pressed a key that deletes.
    void deleteWanted();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    bool toggleCurrent();
};
