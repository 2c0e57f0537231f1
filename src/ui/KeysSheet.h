#pragma once

#include "look/window/MVCustomWindow.h"
#include "ui/VolumeMenu.h"

#include <QList>

/// The sheet that lists the keys of the volume window: those of the items, and those of the menu.
/// Any of Escape, Return and its button closes it. Main thread only.
class KeysSheet final : public MVCustomWindow {
    Q_OBJECT

  public:
    /// On the window, which owns it. Destroyed when it is closed.
    KeysSheet(QWidget& window, const QList<VolumeMenu::Key>& menuKeys);

    /// Opens it in its place.
    void open();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    static QList<VolumeMenu::Key> itemKeys();
    static QWidget* makeColumn(const QString& title, const QList<VolumeMenu::Key>& keys);
};
