#pragma once

#include <QPainter>
#include <QPixmap>

#include <array>
#include <cstddef>

/// A cache of pixmaps that many widgets show, with a key that is cheaper than a string. `Key` is a
/// structure of numbers with ==. Holds the newest few, enough for one window. Main thread only.
template <typename Key>
class PixmapCache {
  public:
    /// The pixmap for `key`. If it is not cached, `draw` gets a painter on a transparent pixmap of
    /// `size` pixels with `ratio` device pixels each. Valid until the next call.
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
