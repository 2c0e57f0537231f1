#pragma once

#include <QMenu>

class UndoHistory;

/// The menu of the volume window: File, Edit, Window and Help, with their shortcuts, which hold in
/// the whole window. F10 opens it, and Alt with a letter one of the four. Main thread only.
class VolumeMenu final : public QMenu {
    Q_OBJECT

  public:
    /// Belongs to the window. Without `history` there is nothing to undo.
    explicit VolumeMenu(QWidget& window);

    /// Shows what can be taken back now.
    void showHistory(const UndoHistory& history);

    /// What Delete would ignore; empty for nothing.
    void showSelection(const QString& name);

  Q_SIGNALS:
    void closeWanted();
    void quitWanted();
    void undoWanted();
    void redoWanted();
    void ignoreWanted();
    void minimizeWanted();
    void zoomWanted();
    void aboutWanted();

    /// By its keys; with one of the four chosen, whose own menu is to open too, or null.
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
