#pragma once

#include "framework/logviewer/LogFinder.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace QN::logviewer {

class LogDocument;

/// Goes from one row of a document that contains a text to the next. Main thread.
class LogSearch final : public QObject {
    Q_OBJECT

  public:
    /// The document must outlive the search. Only rows that `isShown` are found.
    LogSearch(const LogDocument& document, std::function<bool(std::size_t row)> isShown);

    void setNeedle(const QString& needle);
    [[nodiscard]] const QString& needle() const noexcept { return needle_; }

    /// The document has more rows, or others.
    void documentGrew();
    void documentReplaced() { setNeedle(needle_); }

    enum class Direction : std::uint8_t { next, previous };

    /// Finds the row nearest to `from`, which itself counts if `includesFrom`, and goes on at the
    /// other end of the document. Answers by found() or foundNothing(), at once or when enough has
    /// been searched; a later call replaces it.
    void find(std::size_t from, Direction direction, bool includesFrom);

    /// How many rows have been found so far, and whether that is all.
    [[nodiscard]] std::size_t count() const noexcept { return rows_.size(); }
    [[nodiscard]] bool isDone() const noexcept { return !finder_ || finder_->isDone(); }

  Q_SIGNALS:
    void found(std::size_t row, bool hasWrapped);
    void foundNothing();
    void countChanged();

  private:
    struct Request {
        std::size_t from;
        Direction direction;
        bool includesFrom;
    };

    void take(const std::vector<std::uint64_t>& lines);
    void answer();
    std::optional<std::size_t> nearest(const Request& request) const;
    std::optional<std::size_t> firstFromEnd(Direction direction) const;

    const LogDocument& document_;
    const std::function<bool(std::size_t)> isShown_;
    QString needle_;
    std::unique_ptr<LogFinder> finder_;
    std::vector<std::size_t> rows_; // with the needle, in their order
    std::optional<Request> request_;
};

} // namespace QN::logviewer
