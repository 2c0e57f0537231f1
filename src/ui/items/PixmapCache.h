#pragma once

#include <QPainter>
#include <QPixmap>

#include <array>
#include <cstddef>

/// Pictures that are drawn once and shown again and again by many widgets, found without a text to
/// search for. `Key` is a structure of numbers with ==. Holds the newest few, as many as one window
/// shows. The main thread only.
template <typename Key>
class PixmapCache {
  public:
    /// The picture for `key`; drawn by `draw`, which is given a painter on a transparent one of so
    /// many pixels with `ratio` device pixels each, when it is not kept. Valid until the next call.
    template <typename Draw>
    const QPixmap& get(const Key& key, const QSizeF& size, qreal ratio, const Draw& draw) {
        for (const Entry& entry : entries_) {
            if (!entry.pixmap.isNull() && entry.key == key)
                return entry.pixmap;
        }
        Entry& entry = entries_[next_];
        next_ = (next_ + 1) % entries_.size();
        entry = {key, QPixmap((size * ratio).toSize().expandedTo({1, 1}))};
        entry.pixmap.setDevicePixelRatio(ratio);
        entry.pixmap.fill(Qt::transparent);
        QPainter painter(&entry.pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        draw(painter);
        return entry.pixmap;
    }

  private:
    struct Entry {
        Key key{};
        QPixmap pixmap;
    };
    std::array<Entry, 16> entries_;
    std::size_t next_ = 0;
};
