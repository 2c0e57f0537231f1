#pragma once

#include <QString>
#include <QStringList>

#include <optional>

#include "platform/base/MonotonicClock.h"

/// Which item of the grid a key leads to. Items are counted from 0 in the order of reading.
struct ItemNavigation {
    int count = 0;
    int columns = 1;
    int rowsOfPage = 1;
    Qt::LayoutDirection direction = Qt::LeftToRight;

    /// From item `current`, none being before the first; nothing for keys that lead nowhere. At the
    /// ends of the grid it stays where it is.
    std::optional<int> after(int key, std::optional<int> current) const;
};

/// Finds an item by the beginning of its name while a person types it. A pause begins another name;
/// the same letter again goes to the next one that begins with it. Main thread only.
class TypeAhead {
  public:
    static constexpr std::chrono::milliseconds pause{1000};

    /// The item for the text that has come together with `typed`; nothing when no name begins so.
    /// Case and accents do not count.
    std::optional<int> find(const QString& typed, const QStringList& names,
                            std::optional<int> current);

    /// Whether a name is being typed, so that a space belongs to it.
    bool isUnderWay() const;

  private:
    QString text_;
    std::optional<platform::MonotonicClock::time_point> last_;
};
