#pragma once

#include "framework/logviewer/LogFinder.h"
#include "framework/logviewer/LogVisibleRows.h"

#include <QObject>
#include <QString>

#include <memory>

namespace QN::logviewer {

class LogDocument;

/// Which rows of a document are shown, by level and text. Main thread.
class LogFilter final : public QObject {
    Q_OBJECT

  public:
    /// The document must outlive the filter.
    explicit LogFilter(const LogDocument& document) : document_(document) {}

    [[nodiscard]] const LogVisibleRows& rows() const noexcept { return rows_; }

    /// Begins anew with these levels, and rows with the text only unless it is empty. Rows with the
    /// text come later, by grown().
    void set(LogVisibleRows::Levels levels, const QString& text);

    /// The document has more rows at its end. Takes those that need no search.
    void documentGrew();

    /// The document has other rows.
    void documentReplaced() { set(levels_, text_); }

    /// Whether all rows up to this one that pass are known; of a row beyond the last one: all.
    [[nodiscard]] bool hasReached(std::size_t row) const noexcept;

  Q_SIGNALS:
    /// A search has gone on, and may have let more rows through.
    void grown();

  private:
    void take(const std::vector<std::uint64_t>& lines, std::uint64_t end);

    const LogDocument& document_;
    LogVisibleRows rows_;
    LogVisibleRows::Levels levels_ = LogVisibleRows::allLevels;
    QString text_;
    std::unique_ptr<LogFinder> finder_; // while there is a text
    std::uint64_t searchedTo_ = 0;
};

} // namespace QN::logviewer
