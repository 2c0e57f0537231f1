#pragma once

#include "look/window/MVCustomWindow.h"

#include <QPointer>

class QBoxLayout;
class QNObjToolbarItem;

/// The window of a QNPreferencesWindowController: a toolbar, and a view below. It reports what
/// happens to it; the controller decides. Escape and Ctrl+W close it. Main thread only.
class PreferencesWindow final : public MVCustomWindow {
    Q_OBJECT

  public:
    PreferencesWindow();

    /// Adds the item at the end of the toolbar, which owns it from now on.
    void addItem(QNObjToolbarItem& item);

    /// Shows `view` instead of the present one, as large as the space below the toolbar. Null:
    /// none.
    void setView(QWidget* view);

    /// The size of the window around a view of that size.
    [[nodiscard]] QSize sizeForView(const QSize& view) const;

  Q_SIGNALS:
    void moved();
    void willClose();

  protected:
    void moveEvent(QMoveEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    QBoxLayout& toolbarLayout() const;
    void colorParts();

    QWidget* const toolbar_;
    QWidget* const place_; // of the view
    QPointer<QWidget> view_;
};
