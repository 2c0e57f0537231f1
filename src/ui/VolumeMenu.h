#pragma once

#include <QKeySequence>
#include <QList>
#include <QMenu>
#include <QStringList>

class UndoHistory;

/// The menu of the volume window, with the window's look. Each entry has a key, which works in the
/// whole window; F10 opens the menu. It is flat. What can be undone or redone comes first, as long
/// as there is something. Main thread only.
class VolumeMenu final : public QMenu {
    Q_OBJECT

  public:
    /// The window becomes its parent.
    explicit VolumeMenu(QWidget& window);

    /// Updates the entries for Undo and Redo.
    void showHistory(const UndoHistory& history);

    /// Whether there is a page to recommend the program with; at first there is none.
    void setCanRecommend(bool isPossible);

    /// Whether closing the window keeps the program running, so that closing and quitting are two
    /// entries; at first they are one, Quit. The key for closing works in any case.
    void setCloses(bool isSeparate);

    /// A row of the list of keys.
    struct Key {
        QString keys;
        QString meaning;
    };

    /// The keys of all entries that can be chosen, whether or not just now.
    [[nodiscard]] QList<Key> keys() const;

    /// Checks or unchecks the entry for more contrast.
    void showMoreContrast(bool isWanted);

  Q_SIGNALS:
    void undoWanted();
    void redoWanted();
    void preferencesWanted();
    void ignoredWanted();
    void logWanted();
    void supportWanted();
    void keysWanted();
    void recommendWanted();
    void uninstallWanted();
    void aboutWanted();
    void closeWanted();
    void quitWanted();
    void minimizeWanted();
    void zoomWanted();
    void moreContrastWanted(bool isWanted);

    /// The user pressed the key that opens the menu.
    void openWanted();

  private:
    QAction* addEntry(const QString& title, const QList<QKeySequence>& keys,
                      void (VolumeMenu::*wanted)());
    QAction* makeKey(const QString& title, const QList<QKeySequence>& keys,
                     void (VolumeMenu::*wanted)());
    void addMoreContrast();
    void setPresent(QAction& entry, QAction& before, bool isPresent);

    QWidget& window_;
    QAction* const undo_;
    QAction* const redo_;
    QAction* const recommend_;
    QAction* const close_;
    QAction* line_ = nullptr; // below undo_ and redo_
    QAction* moreContrast_ = nullptr;
    QAction* uninstall_ = nullptr;
    QAction* quit_ = nullptr;
};
