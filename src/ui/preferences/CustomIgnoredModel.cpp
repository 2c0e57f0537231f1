#include "ui/preferences/CustomIgnoredModel.h"

#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "platform/text/OneLineText.h"
#include "platform/text/Texts.h"

#include <algorithm>
#include <iterator>
#include <utility>

CustomIgnoredModel::CustomIgnoredModel(const MVIgnoredApps& ignored, Icons icons)
    : ignored_(ignored), icons_(std::move(icons)), names_(ignored.custom()) {}

/// All changes but the first one, which sorts, are in one place of the list.
void CustomIgnoredModel::reload() {
    const QStringList now = ignored_.custom();
    const auto begins = std::ranges::mismatch(std::as_const(names_), now);
    const auto first = begins.in1 - names_.cbegin();
    const auto ends = std::mismatch(names_.crbegin(), std::make_reverse_iterator(begins.in1),
                                    now.crbegin(), std::make_reverse_iterator(begins.in2));
    const auto same = ends.first - names_.crbegin();
    const auto gone = names_.size() - same - first;
    const auto come = now.size() - same - first;
    const int row = static_cast<int>(first);
    if (gone > 0) {
        beginRemoveRows({}, row, static_cast<int>(first + gone) - 1);
        names_.remove(first, gone);
        endRemoveRows();
    }
    if (come > 0) {
        beginInsertRows({}, row, static_cast<int>(first + come) - 1);
        names_ = now;
        endInsertRows();
    }
}

int CustomIgnoredModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(names_.size());
}

int CustomIgnoredModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns;
}

QVariant CustomIgnoredModel::data(const QModelIndex& index, int role) const {
    const QString& process = names_[index.row()];
    if (index.column() == icon && role == Qt::DecorationRole)
        return icons_(process);
    if (index.column() != name)
        return {};
    const QString shown = platform::oneLineText(MVCommAppValue::displayNameForProcessName(process));
    return role == Qt::DisplayRole || role == Qt::ToolTipRole ? shown : QVariant();
}

/// For assistive tools, as no header is shown.
QVariant CustomIgnoredModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == icon ? Texts::tr("Icon") : Texts::tr("Name");
}
