#include "ui/preferences/FilteredTable.h"

#include "platform/text/Texts.h"
#include "ui/preferences/IgnoredAppsTable.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

FilteredTable::FilteredTable(const QString& title, QAbstractItemModel& rows, int iconColumn)
    : filter_(new QLineEdit), table_(new IgnoredAppsTable) {
    shown_.setSourceModel(&rows);
    shown_.setFilterKeyColumn(iconColumn + 1);
    shown_.setFilterCaseSensitivity(Qt::CaseInsensitive);
    table_->setRows(shown_, iconColumn);
    auto* const label = new QLabel(title);
    label->setBuddy(table_);
    table_->setAccessibleName(QString(title).remove(QLatin1Char('&')).remove(QLatin1Char(':')));
    filter_->setPlaceholderText(Texts::tr("Filter"));
    filter_->setAccessibleName(Texts::tr("Filter"));
    filter_->setClearButtonEnabled(true);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    auto* const top = new QHBoxLayout;
    top->addWidget(label, 1);
    top->addWidget(filter_);
    layout->addLayout(top);
    layout->addWidget(table_, 1);
    connect(filter_, &QLineEdit::textChanged, &shown_,
            &QSortFilterProxyModel::setFilterFixedString);
    connect(filter_, &QLineEdit::textChanged, this, &FilteredTable::showFilterIfUseful);
    for (const auto change : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&rows, change, this, &FilteredTable::showFilterIfUseful);
    showFilterIfUseful();
}

/// A field in use stays.
void FilteredTable::showFilterIfUseful() {
    filter_->setVisible(shown_.sourceModel()->rowCount() > mostWithoutFilter ||
                        !filter_->text().isEmpty());
}

QList<int> FilteredTable::selectedRows() const {
    QList<int> rows;
    for (const QModelIndex& each : table_->selectionModel()->selectedRows())
        rows += shown_.mapToSource(each).row();
    std::ranges::sort(rows);
    return rows;
}
