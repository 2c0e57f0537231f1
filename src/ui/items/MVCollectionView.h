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
/// background, lighter while its window is not the active one if the theme says so. Main thread
/// only.
class MVCollectionView final : public QWidget {
    Q_OBJECT

  public:
    using Items = std::vector<std::unique_ptr<MVCollectionViewItem>>;

    /// How many columns of items fit, at least one.
    static int columnsFor(int width) noexcept;

    /// On the thread's run loop. The theme must outlive the grid; null is the one in use.
    explicit MVCollectionView(QWidget* parent = nullptr, const MVBlackTheme* theme = nullptr);
    ~MVCollectionView() override;

    const Items& items() const noexcept { return items_; }

    /// To change them, take them, and set the new ones, of which some may be the old ones.
    Items takeItems() noexcept;
    void setItems(Items items);

    /// What is said in the free room below the items; empty for nothing.
    void setHint(const QString& text);

    /// Whether the last change of the width is so recent that another is likely.
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
    QRect placeOf(std::size_t index) const;
    void updateCollectionViewColors();
    QPixmap background() const;

    const MVBlackTheme& theme() const;

    const MVBlackTheme* const theme_;
    FramePacer pacer_;
    Items items_;
    QLabel* const hint_;
    QColor colors_[2];   // of the rows in turn
    QPixmap background_; // what lies below them, to be repeated; null when there is no such thing
    std::optional<platform::MonotonicClock::time_point> resized_;
};
