#pragma once

#include <QString>
#include <QStringList>

#include <optional>

#include "platform/base/MonotonicClock.h"

/// Keyboard navigation in the grid. Items are numbered from 0 in reading order.
struct ItemNavigation {
    int count = 0;
    int columns = 1;
    int rowsOfPage = 1;
    Qt::LayoutDirection direction = Qt::LeftToRight;

    /// The item that `key` leads to from item `current`, where none is before the first; nothing
    /// for other keys. Stops at the ends of the grid.
    [[nodiscard]] std::optional<int> after(int key, std::optional<int> current) const;
};

/// Finds an item by the beginning of its name as the user types. A pause starts a new name;
/// repeating the same letter moves to the next name that begins with it. Main thread only.
class TypeAhead {
  public:
    static constexpr std::chrono::milliseconds pause{1000};

    /// The item for the text typed so far and `typed`; nothing if no name begins with it. Ignores
    /// case and accents.
    [[nodiscard]] std::optional<int> find(const QString& typed, const QStringList& names,
                                          std::optional<int> current);

    /// Whether a name is being typed, so that a space is part of it.
    [[nodiscard]] bool isUnderWay() const;

  private:
    QString text_;
    std::optional<platform::MonotonicClock::time_point> last_;
};
