#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariantAnimation>

#include <memory>
#include <vector>

class PreferencesWindow;
class QNObjToolbarItem;
class QNPreferencesItemViewController;
class QWidget;

namespace platform {
class UserDefaults;
}

/// Shows panes of preferences in a window, one at a time, and a toolbar to choose one. The window
/// takes the size of the pane, and appears where it was left; where windows have no positions, as
/// on Wayland, the desktop decides. Closing it only hides it. Main thread only.
class QNPreferencesWindowController : public QObject {
    Q_OBJECT

  public:
    /// Can be combined.
    enum Options : unsigned {
        resizable = 1, ///< the user may resize the window while its pane can be resized
    };

    /// The position is kept in `defaults`, under a key that contains the identifier.
    explicit QNPreferencesWindowController(QString toolbarIdentifier, unsigned options = 0);
    QNPreferencesWindowController(QString toolbarIdentifier, unsigned options,
                                  platform::UserDefaults& defaults);
    ~QNPreferencesWindowController() override;

    /// Owned by the controller.
    QWidget& window() const;

    /// Adds a pane and its item, at the end.
    void addController(const std::shared_ptr<QNPreferencesItemViewController>& pane);

    /// Removes both. If the pane was selected, the first remaining one is selected.
    void removeController(const std::shared_ptr<QNPreferencesItemViewController>& pane);

    /// Shows a pane of this window, as a click on its item does.
    void selectController(const std::shared_ptr<QNPreferencesItemViewController>& pane);

    /// The panes in the order of the toolbar.
    [[nodiscard]] QList<std::shared_ptr<QNPreferencesItemViewController>> controllers() const;

    /// The pane that is shown; null before the window was first shown.
    [[nodiscard]] std::shared_ptr<QNPreferencesItemViewController> selectedController() const;

    /// The width of the toolbar, in pixels: the window is never narrower, so every label can be
    /// read.
    [[nodiscard]] int minimumViewWidth() const;

    /// A click on an item.
    void itemAction(QNObjToolbarItem& item);

    /// Shows the window in front of the others, with the first pane if none is selected.
    void showWindow();

    /// All panes are told.
    void windowWillClose();

    /// The size that the window may have instead of the proposed one.
    [[nodiscard]] QSize windowWillResize(const QSize& proposed) const;

    /// Keeps the position of a visible window.
    void windowDidMove();

    [[nodiscard]] QString windowPositionKey() const;
    void saveWindowPosition();

    /// Moves the window to the saved position, or as near as the screens permit. Does nothing if
    /// there is none.
    void restoreWindowPosition();

    /// The toolbar's items by their identifiers; null if there is none.
    QNObjToolbarItem* itemForItemIdentifier(const QString& identifier) const;
    [[nodiscard]] QStringList toolbarAllowedItemIdentifiers() const { return identifiers(); }
    [[nodiscard]] QStringList toolbarDefaultItemIdentifiers() const { return identifiers(); }
    [[nodiscard]] QStringList toolbarSelectableItemIdentifiers() const { return identifiers(); }

  private:
    QStringList identifiers() const;
    QNObjToolbarItem* itemOf(const QNPreferencesItemViewController* pane) const;
    bool showsResizeIndicator() const;
    void selectNeighbour(const QNObjToolbarItem& item, int offset);
    void resizeToPane();
    void makeRoomBelow(int height);
    void limitSize();

    const QString toolbarIdentifier_;
    const unsigned options_;
    platform::UserDefaults& defaults_;
    const std::unique_ptr<PreferencesWindow> window_;
    std::vector<QPointer<QNObjToolbarItem>>
        items_; // each has its pane; the window's toolbar owns it
    QPointer<QNObjToolbarItem> selected_;
    QVariantAnimation resizing_;
};
