#pragma once

#include "look/theme/MVBlackTheme.h"
#include "platform/base/MonotonicClock.h"
#include "ui/items/FramePacer.h"

#include <QPixmap>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

class MVCollectionViewItem;
class QLabel;

/// The grid of items: rows of one height, with as many columns as fit. Paints the theme's
/// background, which may be lighter while its window is inactive. The item with the focus of the
/// window is the current one. Main thread only.
class MVCollectionView final : public QWidget {
    Q_OBJECT

  public:
    using Items = std::vector<std::unique_ptr<MVCollectionViewItem>>;

    /// How many columns of items fit, at least one.
    static int columnsFor(int width) noexcept;

    /// Uses the thread's run loop. The theme must outlive the grid; null is the current one.
    explicit MVCollectionView(QWidget* parent = nullptr, const MVBlackTheme* theme = nullptr);
    ~MVCollectionView() override;

    const Items& items() const noexcept { return items_; }

    /// To change the items, take them, and set the new ones, which may include old ones.
    Items takeItems() noexcept;
    void setItems(Items items);

    /// After a scroll below the mouse, which is at that place of the grid now.
    void showUnderMouse(const QPoint& place);

    /// The text in the empty space below the items; may be empty.
    void setHint(const QString& text);

    /// Whether the width has changed recently, so that another change is likely.
    bool isInLiveResize() const;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void layOut();
    void setOrderOfFocus();
    void followFocus();
    void showCurrent(MVCollectionViewItem* item);
    QRect placeOf(std::size_t index) const;
    void updateCollectionViewColors();
    QPixmap background() const;

    const MVBlackTheme& theme() const;

    const MVBlackTheme* const theme_;
    FramePacer pacer_;
    Items items_;
    MVCollectionViewItem* current_ = nullptr; // of them, the one that shows it
    QLabel* const hint_;
    QColor colors_[2];   // alternating, of the rows
    QPixmap background_; // a tile below them; null for none
    std::optional<platform::MonotonicClock::time_point> resized_;
};
