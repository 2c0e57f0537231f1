#include "framework/logviewer/AccessibleLogTable.h"

#include "framework/logviewer/LogTableView.h"
#include "platform/text/Texts.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <limits>
#include <unordered_map>

namespace {

constexpr std::size_t mostItems = 512;

/// A row: its time, the name of its level, and its text.
class AccessibleLogRow final : public QAccessibleInterface {
  public:
    AccessibleLogRow(LogTableView& table, std::size_t row) : table_(&table), row_(row) {}

    bool isValid() const override {
        return table_ && row_ < table_->source().numberOfRowsInTableView();
    }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(table_);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text kind) const override {
        if (!isValid() || kind != QAccessible::Name)
            return {};
        const QNLogEntry entry = table_->source().entryOfRow(row_);
        QStringList parts{entry.date().time().toString(QStringLiteral("HH:mm:ss")),
                          nameOfLogLevel(entry.level()), entry.message()};
        parts.removeAll(QString());
        return parts.join(QStringLiteral(", "));
    }

    QRect rect() const override {
        if (!isValid())
            return {};
        const QRect place = table_->rowRect(row_);
        return place.isEmpty() ? QRect()
                               : place.translated(table_->viewport()->mapToGlobal(QPoint(0, 0)));
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.selectable = true;
        state.focusable = true;
        state.selected = table_->isSelected(row_);
        state.focused = table_->hasFocus() && table_->currentRow() == row_;
        state.offscreen = table_->rowRect(row_).isEmpty();
        return state;
    }

    std::size_t row() const noexcept { return row_; }

  private:
    const QPointer<LogTableView> table_;
    const std::size_t row_;
};

/// All rows count, but only those that a tool has asked for are objects.
class AccessibleLogTable final : public QAccessibleWidget {
  public:
    explicit AccessibleLogTable(LogTableView& table)
        : QAccessibleWidget(&table, QAccessible::List, Texts::tr("Log")), table_(table) {}
    ~AccessibleLogTable() override { forgetItems(); }

    int childCount() const override {
        const std::size_t rows = table_.source().numberOfRowsInTableView();
        return static_cast<int>(std::min<std::size_t>(rows, std::numeric_limits<int>::max()));
    }

    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        const auto row = static_cast<std::size_t>(index);
        if (const auto known = items_.find(row); known != items_.end())
            return QAccessible::accessibleInterface(known->second);
        if (items_.size() >= mostItems)
            forgetItems();
        auto* const item = new AccessibleLogRow(table_, row); // Qt owns it
        items_.emplace(row, QAccessible::registerAccessibleInterface(item));
        return item;
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* const item = dynamic_cast<const AccessibleLogRow*>(child);
        return item != nullptr ? static_cast<int>(item->row()) : -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        const QPoint place = table_.viewport()->mapFromGlobal(QPoint(x, y));
        if (!table_.viewport()->rect().contains(place))
            return nullptr;
        return child(static_cast<int>(table_.rowAt(place.y())));
    }

    QAccessibleInterface* focusChild() const override {
        return table_.hasFocus() && table_.currentRow() != LogTableView::noRow
                   ? child(static_cast<int>(table_.currentRow()))
                   : nullptr;
    }

  private:
    void forgetItems() const {
        for (const auto& [row, id] : items_)
            QAccessible::deleteAccessibleInterface(id);
        items_.clear();
    }

    LogTableView& table_;
    mutable std::unordered_map<std::size_t, QAccessible::Id> items_;
};

/// Qt owns the result.
QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* const table = qobject_cast<LogTableView*>(object))
        return new AccessibleLogTable(*table);
    return nullptr;
}

} // namespace

void installAccessibleLogTable() {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(&makeInterface);
        return true;
    }();
}
