#include "ui/input/ItemNavigation.h"

#include <algorithm>

using platform::MonotonicClock;

namespace {

/// Without case, and without the accents that stand on letters.
QString plain(const QString& text) {
    QString letters;
    for (const QChar each : text.normalized(QString::NormalizationForm_KD)) {
        if (each.category() != QChar::Mark_NonSpacing)
            letters += each;
    }
    return letters.toCaseFolded();
}

bool isOneLetter(const QString& text) {
    return std::ranges::all_of(text, [&](QChar each) { return each == text[0]; });
}

} // namespace

std::optional<int> ItemNavigation::after(int key, std::optional<int> current) const {
    if (count == 0)
        return std::nullopt;
    const int forwards = direction == Qt::RightToLeft ? -1 : 1;
    int step = 0;
    switch (key) {
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return count - 1;
    case Qt::Key_Left:
        step = -forwards;
        break;
    case Qt::Key_Right:
        step = forwards;
        break;
    case Qt::Key_Up:
        step = -columns;
        break;
    case Qt::Key_Down:
        step = columns;
        break;
    case Qt::Key_PageUp:
        step = -columns * rowsOfPage;
        break;
    case Qt::Key_PageDown:
        step = columns * rowsOfPage;
        break;
    default:
        return std::nullopt;
    }
    if (!current)
        return 0;
    const int target = *current + step;
    if (target >= 0 && target < count)
        return target;
    const bool isPage = key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    if (isPage)
        return std::clamp(target, 0, count - 1);
    // Below the last full row there may be a shorter one.
    const bool hasRowBelow = *current / columns < (count - 1) / columns;
    return key == Qt::Key_Down && hasRowBelow ? count - 1 : *current;
}

bool TypeAhead::isUnderWay() const {
    return last_ && MonotonicClock::now() - *last_ < pause;
}

std::optional<int> TypeAhead::find(const QString& typed, const QStringList& names,
                                   std::optional<int> current) {
    if (!isUnderWay())
        text_.clear();
    last_ = MonotonicClock::now();
    text_ += plain(typed);
    if (text_.isEmpty() || names.isEmpty())
        return std::nullopt;
    const bool isRepeated = isOneLetter(text_);
    const QString sought = isRepeated ? text_.left(1) : text_;
    const auto count = static_cast<int>(names.size());
    const int start = current ? *current + (isRepeated ? 1 : 0) : 0;
    for (int step = 0; step < count; ++step) {
        const int index = (start + step) % count;
        if (plain(names[index]).startsWith(sought))
            return index;
    }
    return std::nullopt;
}
