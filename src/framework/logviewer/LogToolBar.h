#pragma once

#include "framework/logviewer/LogVisibleRows.h"

#include <QString>
#include <QWidget>

class QComboBox;
class QHBoxLayout;
class QLineEdit;
class QMenu;
class QToolButton;

/// The upper bar of the log window: which file is shown, which levels, which texts, and a menu with
/// everything else. Main thread only.
class LogToolBar final : public QWidget {
    Q_OBJECT

  public:
    explicit LogToolBar(QWidget* parent = nullptr);

    /// Lists the log at `path` and its backups, and chooses the first one. Nothing is signalled.
    void setLog(const QString& path);

    /// The file that is chosen; empty when there is no log.
    [[nodiscard]] QString file() const;

    [[nodiscard]] QN::logviewer::LogVisibleRows::Levels levels() const;
    [[nodiscard]] QString filterText() const;
    void openFilter();

    [[nodiscard]] QMenu& menu() const noexcept { return *menu_; }

  Q_SIGNALS:
    void fileChosen();
    void filterChanged();

    /// The user has left the filter's text by Escape or Return.
    void filterLeft();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void makeLevels();

    QComboBox* const files_;
    QComboBox* const levels_;
    QLineEdit* const text_;
    QToolButton* const more_;
    QMenu* const menu_;
};
