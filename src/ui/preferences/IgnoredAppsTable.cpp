#include "ui/preferences/IgnoredAppsTable.h"

#include "look/window/MVScroller.h"

#include <QHeaderView>
#include <QKeyEvent>

#include <algorithm>

namespace {

constexpr int iconSide = 16;
constexpr int padding = 6;

} // namespace

IgnoredAppsTable::IgnoredAppsTable(QWidget* parent) : QTableView(parent) {
    setVerticalScrollBar(new MVScroller(Qt::Vertical));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setIconSize({iconSide, iconSide});
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setWordWrap(false);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    horizontalHeader()->hide();
    verticalHeader()->hide();
    // Every row has the same height, so none has to be measured.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(std::max(iconSide, fontMetrics().height()) + padding);
    // A click that checks a row does not make it the current one by itself.
    connect(this, &QAbstractItemView::clicked, this, [this](const QModelIndex& index) {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    });
}

/// Narrow columns first; the last one takes the space that is left.
void IgnoredAppsTable::setRows(QAbstractItemModel& model, int iconColumn) {
    setModel(&model);
    QHeaderView& header = *horizontalHeader();
    header.setMinimumSectionSize(iconSide);
    header.setSectionResizeMode(QHeaderView::Fixed);
    for (int column = 0; column <= iconColumn; ++column)
        header.resizeSection(column, iconSide + 2 * padding);
    header.setStretchLastSection(true);
    if (const int names = iconColumn + 1; names + 1 < model.columnCount())
        header.resizeSection(names, sizeHintForColumn(names) + 2 * padding);
}

bool IgnoredAppsTable::toggleCurrent() {
    const QModelIndex checked = currentIndex().siblingAtColumn(0);
    if (!checked.isValid() || !checked.flags().testFlag(Qt::ItemIsUserCheckable))
        return false;
    const bool isOn = checked.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model()->setData(checked, static_cast<int>(isOn ? Qt::Unchecked : Qt::Checked),
                            Qt::CheckStateRole);
}

void IgnoredAppsTable::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace)
        Q_EMIT deleteWanted();
    else if (event->key() != Qt::Key_Space || !toggleCurrent())
        QTableView::keyPressEvent(event);
}
