#include "framework/logviewer/LogFilter.h"

#include "framework/logviewer/LogDocument.h"

namespace QN::logviewer {

void LogFilter::set(LogVisibleRows::Levels levels, const QString& text) {
    levels_ = levels;
    text_ = text;
    finder_.reset();
    searchedTo_ = 0;
    rows_.reset(levels, !text.isEmpty());
    if (!text.isEmpty() && document_.file())
        finder_ = std::make_unique<LogFinder>(
            document_.file(), text,
            [this](const auto& lines, std::uint64_t end) { take(lines, end); });
    documentGrew();
}

void LogFilter::documentGrew() {
    const LogIndex& index = document_.index();
    rows_.grow(index);
    if (finder_ && index.size() > 0)
        finder_->searchTo(index[0].start(), index.end());
}

bool LogFilter::hasReached(std::size_t row) const noexcept {
    const LogIndex& index = document_.index();
    if (!finder_ || index.size() == 0)
        return true;
    return row < index.size() ? searchedTo_ > index[row].start() : finder_->isDone();
}

void LogFilter::take(const std::vector<std::uint64_t>& lines, std::uint64_t end) {
    searchedTo_ = end;
    const LogIndex& index = document_.index();
    for (const std::uint64_t line : lines) {
        if (const std::size_t row = index.rowAt(line); row < index.size())
            rows_.add(index, row);
    }
    Q_EMIT grown();
}

} // namespace QN::logviewer
