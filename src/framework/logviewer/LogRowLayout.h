#pragma once

#include "framework/logviewer/QNLogEntry.h"

#include <QFont>
#include <QRectF>
#include <QTextLayout>

#include <memory>

class QPainter;
class QString;

namespace QN::logviewer {

/// The text of a row, laid out in lines as long as its column is wide, or without wrapping. The
/// entry knows its height. Main thread.
class LogRowLayout {
  public:
    explicit LogRowLayout(QNLogEntry entry);

    /// Lays the text out unless that has been done for this width; 0: no wrapping. Returns whether
    /// its height has changed.
    bool measure(const QFont& font, double columnWidth);

    [[nodiscard]] const QNLogEntry& entry() const noexcept { return entry_; }

    /// Of the longest line, in pixels.
    [[nodiscard]] double textWidth() const noexcept { return textWidth_; }

    /// Where the line with the first match of the needle begins, below the row's top; 0 without
    /// one.
    [[nodiscard]] int topOfMatch(const QString& needle) const;

    /// Draws the text in the painter's colour from `place` on. Matches of the needle are marked.
    void draw(QPainter& painter, const QPointF& place, const QRectF& clip,
              const QString& needle) const;

    /// Above and below the text, in pixels.
    static constexpr int padding = 2;

  private:
    QNLogEntry entry_;
    std::unique_ptr<QTextLayout> layout_; // null before it is measured
    double textWidth_ = 0;
};

/// The message as one text of a layout: what has no picture gets one, and line feeds are
/// separators.
[[nodiscard]] QString shownMessage(QString message);

} // namespace QN::logviewer
