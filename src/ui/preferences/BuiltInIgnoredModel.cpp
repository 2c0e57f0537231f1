#include "ui/preferences/BuiltInIgnoredModel.h"

#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApp.h"
#include "model/MVIgnoredApps.h"
#include "platform/text/Texts.h"
#include "ui/preferences/BuiltInDescriptions.h"

#include <utility>

BuiltInIgnoredModel::BuiltInIgnoredModel(MVIgnoredApps& ignored, Icons icons)
    : ignored_(ignored), icons_(std::move(icons)) {}

void BuiltInIgnoredModel::reload() {
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columns - 1));
}

int BuiltInIgnoredModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(ignored_.builtIn().size());
}

int BuiltInIgnoredModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns;
}

Qt::ItemFlags BuiltInIgnoredModel::flags(const QModelIndex& index) const {
    const auto usual = QAbstractTableModel::flags(index);
    return index.column() == enabled ? usual | Qt::ItemIsUserCheckable : usual;
}

QVariant BuiltInIgnoredModel::data(const QModelIndex& index, int role) const {
    const MVIgnoredApp& entry = *ignored_.builtIn()[static_cast<std::size_t>(index.row())];
    switch (index.column()) {
    case enabled:
        if (role == Qt::CheckStateRole)
            return static_cast<int>(entry.enabled() ? Qt::Checked : Qt::Unchecked);
        return role == Qt::AccessibleTextRole ? entry.name() : QVariant();
    case icon:
        return role == Qt::DecorationRole ? icons_(entry.name()) : QVariant();
    case name:
        if (role == Qt::AccessibleDescriptionRole)
            return builtInDescription(entry.name());
        return role == Qt::DisplayRole ? MVCommAppValue::displayNameForProcessName(entry.name())
                                       : QVariant();
    case description:
        return role == Qt::DisplayRole || role == Qt::ToolTipRole ? builtInDescription(entry.name())
                                                                  : QVariant();
    default:
        return {};
    }
}

bool BuiltInIgnoredModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (index.column() != enabled || role != Qt::CheckStateRole)
        return false;
    ignored_.builtIn()[static_cast<std::size_t>(index.row())]->setEnabled(value.toInt() !=
                                                                          Qt::Unchecked);
    return true;
}

/// For assistive tools, as no header is shown.
QVariant BuiltInIgnoredModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case enabled:
        return Texts::tr("Ignored");
    case icon:
        return Texts::tr("Icon");
    case name:
        return Texts::tr("Name");
    default:
        return Texts::tr("Description");
    }
}
