#include "framework/logviewer/LogSearch.h"

#include "framework/logviewer/LogDocument.h"

#include <algorithm>
#include <utility>

namespace QN::logviewer {

LogSearch::LogSearch(const LogDocument& document, std::function<bool(std::size_t)> isShown)
    : document_(document), isShown_(std::move(isShown)) {}

void LogSearch::setNeedle(const QString& needle) {
    needle_ = needle;
    finder_.reset();
    rows_.clear();
    request_.reset();
    if (!needle.isEmpty() && document_.file())
        finder_ = std::make_unique<LogFinder>(
            document_.file(), needle,
            [this](const auto& lines, std::uint64_t /*end*/) { take(lines); });
    documentGrew();
    Q_EMIT countChanged();
}

void LogSearch::documentGrew() {
    const LogIndex& index = document_.index();
    if (finder_ && index.size() > 0)
        finder_->searchTo(index[0].start(), index.end());
}

void LogSearch::take(const std::vector<std::uint64_t>& lines) {
    const LogIndex& index = document_.index();
    for (const std::uint64_t line : lines) {
        const std::size_t row = index.rowAt(line);
        if (row < index.size() && (rows_.empty() || rows_.back() < row))
            rows_.push_back(row);
    }
    Q_EMIT countChanged(); // first, as an answer may have more to tell
    if (request_)
        answer();
}

void LogSearch::find(std::size_t from, Direction direction, bool includesFrom) {
    request_ = Request{from, direction, includesFrom};
    answer();
}

std::optional<std::size_t> LogSearch::nearest(const Request& request) const {
    if (request.direction == Direction::next) {
        auto row = request.includesFrom ? std::ranges::lower_bound(rows_, request.from)
                                        : std::ranges::upper_bound(rows_, request.from);
        row = std::find_if(row, rows_.end(), isShown_);
        return row != rows_.end() ? std::optional(*row) : std::nullopt;
    }
    auto end = request.includesFrom ? std::ranges::upper_bound(rows_, request.from)
                                    : std::ranges::lower_bound(rows_, request.from);
    const auto row = std::find_if(std::make_reverse_iterator(end), rows_.rend(), isShown_);
    return row != rows_.rend() ? std::optional(*row) : std::nullopt;
}

std::optional<std::size_t> LogSearch::firstFromEnd(Direction direction) const {
    const bool isNext = direction == Direction::next;
    return nearest({isNext ? 0 : document_.index().size(), direction, true});
}

/// A match in the rows that have been searched is the nearest one only in the direction of the
/// search.
void LogSearch::answer() {
    const Request request = *request_;
    const bool mayBeNearest = request.direction == Direction::next || isDone();
    if (const auto row = mayBeNearest ? nearest(request) : std::nullopt) {
        request_.reset();
        Q_EMIT found(*row, false);
    } else if (isDone()) {
        request_.reset();
        if (const auto wrapped = firstFromEnd(request.direction))
            Q_EMIT found(*wrapped, true);
        else
            Q_EMIT foundNothing();
    }
}

} // namespace QN::logviewer
