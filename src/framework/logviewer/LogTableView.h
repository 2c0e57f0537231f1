#pragma once

#include "framework/logviewer/LogHeights.h"
#include "framework/logviewer/LogRowLayout.h"
#include "framework/logviewer/LogTableSource.h"

#include <QAbstractScrollArea>
#include <QTimer>

#include <cstddef>
#include <cstdint>
#include <unordered_map>

/// The table of a log: a column with the time of day, and one with the message. Only rows that are
/// seen are measured. What stays in place is the row at the top, so that nothing that is measured,
/// estimated or added moves what is being read; at the end it follows what is added. One row is the
/// current one, and a range around it is selected. Main thread.
class LogTableView final : public QAbstractScrollArea {
    Q_OBJECT

  public:
    static constexpr std::size_t noRow = static_cast<std::size_t>(-1);

    /// The source must outlive the view.
    explicit LogTableView(LogTableSource& source, QWidget* parent = nullptr);

    /// Rows have been added at the end, and the last one from before may have changed.
    void rowsAdded();

    /// What is to stay in sight when rows come before it or go: the current row if it is in sight,
    /// else the row at the top, or the end.
    struct Sight {
        std::size_t row = 0;
        std::int64_t y = 0; ///< of the row's top, in the viewport
        bool isAtEnd = true;
        std::size_t current = noRow;
    };
    [[nodiscard]] Sight sight() const;

    /// All rows may be others; `sight` has their new numbers.
    void rowsReplaced(const Sight& sight);

    /// Measures the rows that are seen again if the column's width has changed.
    void calculateHeights();

    [[nodiscard]] bool isAtEnd() const noexcept { return isAtEnd_; }
    [[nodiscard]] std::size_t topRow() const noexcept { return top_.row; }
    /// May be noRow.
    [[nodiscard]] std::size_t currentRow() const noexcept { return current_; }
    [[nodiscard]] bool isSelected(std::size_t row) const noexcept;

    void scrollToEnd();

    /// Makes it the current row, selects it alone and scrolls it into sight.
    void setCurrentRow(std::size_t row, bool extendsSelection = false);
    /// Scrolls to the first match in the current row, if the row is too tall to be seen as a whole.
    void showMatch();
    void selectAll();
    void copySelection();

    /// Marks where the texts contain the needle.
    void setNeedle(const QString& needle);

    [[nodiscard]] bool isWrapping() const noexcept { return isWrapping_; }
    void setWrapping(bool wraps);

    /// Shown while there are no rows.
    void setHint(const QString& hint);
    [[nodiscard]] const QString& hint() const noexcept { return hint_; }

    [[nodiscard]] LogTableSource& source() const noexcept { return source_; }

    /// A row in the viewport's coordinates; empty when it is not in sight.
    [[nodiscard]] QRect rowRect(std::size_t row) const;

    /// The row there; the number of rows when there is none.
    [[nodiscard]] std::size_t rowAt(int y) const;

  Q_SIGNALS:
    void currentRowChanged(std::size_t row);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    using Place = QN::logviewer::LogHeights::Place;
    using Layout = QN::logviewer::LogRowLayout;

    std::size_t count() const { return source_.numberOfRowsInTableView(); }
    double messageWidth() const;
    QRect messageArea() const;
    Layout& layout(std::size_t row) const;
    int heightOfRow(std::size_t row) const;
    std::int64_t estimate(std::size_t first, std::size_t last) const;
    Place placeAtEnd() const;
    void scrollBy(std::int64_t pixels);
    void setTop(Place place);
    void updateBars();
    void refreshHeights();
    void showAtBottom(std::size_t row);
    void step(int direction, bool extendsSelection);
    void page(int direction, bool extendsSelection);
    bool takeKey(const QKeyEvent& event);
    void takePress(std::size_t row, bool extendsSelection);
    void paintRow(QPainter& painter, std::size_t row, const QRect& area);
    void paintTime(QPainter& painter, const QNLogEntry& entry, const QRect& area);
    void takeFont();
    void readAloud();

    LogTableSource& source_;
    mutable QN::logviewer::LogHeights heights_;
    mutable std::unordered_map<std::size_t, Layout> layouts_; // of rows near those that are seen
    std::size_t knownRows_ = 0;
    Place top_{0, 0};
    bool isAtEnd_ = true;
    std::size_t current_ = noRow;
    std::size_t selectionStart_ = noRow;
    bool isWrapping_ = true;
    bool isUpdatingBars_ = false;
    int timeWidth_ = 0;
    int lineHeight_ = 1;
    double characterWidth_ = 1;
    double widestText_ = 0; // of those that have been seen without wrapping
    QString needle_;
    QString hint_;
    QTimer refreshing_; // of the estimates
};
