#pragma once

#include <QMenu>

class UndoHistory;

/// The menu of the volume window: File, Edit, Window and Help, with their shortcuts, which work in
/// the whole window. F10 opens it, and Alt with a letter opens one of the four. Main thread only.
class VolumeMenu final : public QMenu {
    Q_OBJECT

  public:
    /// The window becomes its parent.
    explicit VolumeMenu(QWidget& window);

    /// Updates the Undo and Redo entries.
    void showHistory(const UndoHistory& history);

    /// Sets the program that Delete would ignore; empty for none.
    void showSelection(const QString& name);

  Q_SIGNALS:
    void uninstallWanted();
    void closeWanted();
    void quitWanted();
    void undoWanted();
    void redoWanted();
    void ignoreWanted();
    void minimizeWanted();
    void zoomWanted();
    void preferencesWanted();
    void logWanted();
    void aboutWanted();
    void supportWanted();

    /// The user pressed a key that opens the menu; `chosen` is the entry whose submenu should open
    /// too, or null.
    void openWanted(QAction* chosen);

  private:
    QMenu* addPart(const QString& title);
    QAction* addEntry(QMenu* part, const QString& title, const QList<QKeySequence>& keys,
                      void (VolumeMenu::*wanted)());
    void addOpening(const QKeySequence& key, QAction* chosen);

    QWidget& window_;
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    QAction* ignore_ = nullptr;
};
