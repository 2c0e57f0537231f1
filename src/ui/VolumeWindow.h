#pragma once

#include "look/window/MVCustomWindow.h"
#include "look/window/ProblemBar.h"
#include "model/AppVolumeView.h"
#include "model/UndoHistory.h"
#include "platform/window/WindowVisibility.h"
#include "ui/items/MVCollectionViewItem.h"

#include <QPoint>
#include <QSize>
#include <QTimer>

#include <memory>

class AppVolumeController;
class MVCollectionView;
class MoreContrast;
class UndoNotice;
class VolumeMenu;
class VolumeScrollView;

namespace platform {
class UserDefaults;
}

/// The volume window: a scrolling grid with one item for each record of the controller, and a menu.
/// Shows whole rows, and draws nothing while it is not visible. User actions can be undone. A bar
/// above the grid, as high as a row, shows problems. Main thread only.
class VolumeWindow final : public MVCustomWindow, public AppVolumeView {
    Q_OBJECT

  public:
    /// Registers as the view of the items' controller, which must outlive the window.
    explicit VolumeWindow(const MVCollectionViewItem::Dependencies& dependencies);
    ~VolumeWindow() override;

    /// The dependencies of the process.
    static MVCollectionViewItem::Dependencies sharedDependencies(AppVolumeController& controller);

    void appsWillChange() override {}
    void appsDidChange(const QList<MVCommAppValue*>& apps) override;
    void handleActivity(qsizetype index, qint64 level100, float level) override;
    void itemDidChange(qsizetype index) override;
    double itemHeight() const override;
    double titleBarHeight() const override;
    void setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) override;
    QRect frame() const override;
    void setFrame(const QRect& frame) override;
    bool fillsScreen() const override;
    void setFillsScreen() override;

    /// Toggles between the height of all programs, as far as the screen has it, and the former
    /// size; leaves the screen's size.
    void zoomToPrograms();

    /// Shows and sets, by way of the menu, whether more contrast is wanted. Must outlive the
    /// window.
    void followContrast(platform::UserDefaults& defaults);

    /// Replaces the problem that is shown; an empty text hides the bar.
    void showProblem(const ProblemBar::Content& content);

    /// Says something at the lower edge for a while.
    void tell(const QString& text);

    /// Whoever acts on an entry that the window does not handle itself connects to it. The window
    /// handles undoing, closing, minimising and the list of keys.
    VolumeMenu& menu() const noexcept { return *menu_; }
    UndoHistory& history() noexcept { return history_; }

  Q_SIGNALS:
    /// The user has pressed a button of the bar.
    void helpWanted();
    void detailsWanted();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    MVCollectionViewItem::Dependencies itemDependencies();
    UndoHistory::Actions undoActions();
    MVCollectionViewItem* itemOf(const QString& program) const;
    void ignore(const QString& process);
    void makeMenu();
    void showKeys();
    void updateMenu();
    void keepToWholeRows();
    void keepOnScreens();
    void snap();
    QSize sizeForAll() const;
    void updateHint();

    UndoHistory history_;
    const MVCollectionViewItem::Dependencies dependencies_;
    ProblemBar* const problemBar_;
    VolumeScrollView* const scrollView_;
    MVCollectionView* const grid_;
    VolumeMenu* const menu_;
    UndoNotice* const notice_;
    platform::WindowVisibility visibility_{*this};
    QTimer endOfResizing_;
    QSize insistedSize_;  // the last size that had to be corrected
    int corrections_ = 0; // of that size
    QSize sizeBeforeZoom_;
    std::unique_ptr<MoreContrast> contrast_; // null: nobody sets it
    QPoint keptPlace_;                       // the stored position, if windows cannot be positioned
};
