#pragma once

#include "framework/logviewer/QNLogEntry.h"

#include <QColor>

#include <cstddef>
#include <optional>

/// What a log table shows. Rows are counted from 0. Main thread.
class LogTableSource {
  public:
    virtual ~LogTableSource() = default;

    [[nodiscard]] virtual std::size_t numberOfRowsInTableView() const = 0;

    /// With its text. Expensive.
    [[nodiscard]] virtual QNLogEntry entryOfRow(std::size_t row) const = 0;

    /// Roughly how long the text of a row is. Cheap.
    struct RowSize {
        std::size_t characters;
        std::size_t lines;
    };
    [[nodiscard]] virtual RowSize sizeOfRow(std::size_t row) const = 0;

    /// None: the normal background.
    [[nodiscard]] virtual std::optional<QColor> backgroundColorForRow(std::size_t row) const = 0;

    /// Copies the rows from `first` to `last`.
    virtual void copyRows(std::size_t first, std::size_t last) = 0;
};
