#include "ui/preferences/MVPrefsIgnored.h"

#include "model/MVIgnoredApps.h"
#include "platform/text/Format.h"
#include "platform/text/OneLineText.h"
#include "platform/text/Texts.h"
#include "platform/window/BundleImage.h"
#include "ui/preferences/IgnoredAppsTable.h"
#include "workspace/Workspace.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using platform::formatted;

namespace {

constexpr int margin = 16;
constexpr int gap = 8;
constexpr QSize usualTables(560, 460);
constexpr QSize imageSize(16, 16);

/// The icon in that size, sharp on dense screens.
QIcon imageOf(const QIcon& icon) {
    QIcon image;
    for (const int ratio : {1, 2, 3}) {
        QPixmap pixmap(imageSize * ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        icon.paint(&painter, pixmap.rect());
        painter.end();
        image.addPixmap(pixmap);
    }
    return image;
}

} // namespace

MVPrefsIgnored::MVPrefsIgnored(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , builtIn_(dependencies_.ignoredApps,
               [this](const QString& name) { return imageForAppName(name); })
    , custom_(dependencies_.ignoredApps,
              [this](const QString& name) { return imageForAppName(name); })
    , ignoredObserver_(MVIgnoredApps::didChangeNotification,
                       [this](const QVariant& /*object*/) { ignoredAppsDidChange(); })
    , workspaceObserver_(Workspace::didChangeNotification,
                         [this](const QVariant& /*object*/) { iconsDidChange(); }) {}

/// The sheet, which asks the pane, and the tables go before what they show.
MVPrefsIgnored::~MVPrefsIgnored() {
    delete addSheet_.data();
    delete builtInTable_.data();
    delete customTable_.data();
}

QString MVPrefsIgnored::label() const {
    return Texts::tr("Ignore List");
}

QIcon MVPrefsIgnored::icon() const {
    return platform::bundleIcon(QStringLiteral("IgnoreList.icns"));
}

std::unique_ptr<QWidget> MVPrefsIgnored::loadView() {
    auto view = std::make_unique<QWidget>();
    builtInTable_ = new FilteredTable(Texts::tr("&Built-in:"), builtIn_, BuiltInIgnoredModel::icon);
    customTable_ = new FilteredTable(Texts::tr("&Your own:"), custom_, CustomIgnoredModel::icon);
    auto* const rows = new QVBoxLayout(view.get());
    rows->setContentsMargins(margin, margin, margin, margin);
    rows->setSpacing(gap);
    rows->addWidget(builtInTable_, 1);
    rows->addWidget(customTable_, 1);
    rows->addWidget(makeButtons());
    connect(customTableView()->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MVPrefsIgnored::updateRemoveButton);
    connect(customTableView(), &IgnoredAppsTable::deleteWanted, this,
            &MVPrefsIgnored::removeIgnoredApp);
    updateRemoveButton();
    view->setMinimumSize(usualTables);
    return view;
}

QWidget* MVPrefsIgnored::makeButtons() {
    auto* const part = new QWidget;
    auto* const row = new QHBoxLayout(part);
    row->setContentsMargins({});
    addProgramButton_ = new BarButton;
    addProgramButton_->setText(Texts::tr("&Add…"));
    removeButton_ = new BarButton;
    removeButton_->setText(Texts::tr("&Remove"));
    row->addWidget(addProgramButton_);
    row->addWidget(removeButton_);
    row->addStretch();
    connect(addProgramButton_, &QPushButton::clicked, this, &MVPrefsIgnored::addIgnoredApp);
    connect(removeButton_, &QPushButton::clicked, this, &MVPrefsIgnored::removeIgnoredApp);
    return part;
}

IgnoredAppsTable* MVPrefsIgnored::builtInTableView() const {
    return builtInTable_ != nullptr ? &builtInTable_->table() : nullptr;
}

IgnoredAppsTable* MVPrefsIgnored::customTableView() const {
    return customTable_ != nullptr ? &customTable_->table() : nullptr;
}

void MVPrefsIgnored::ignoredAppsDidChange() {
    builtIn_.reload();
    custom_.reload();
    updateRemoveButton();
    if (addSheet_ != nullptr && addSheet_->isVisible())
        addSheet_->review();
}

void MVPrefsIgnored::iconsDidChange() {
    icons_.clear();
    for (IgnoredAppsTable* const table : {builtInTableView(), customTableView()}) {
        if (table != nullptr)
            table->viewport()->update();
    }
}

void MVPrefsIgnored::updateRemoveButton() {
    if (removeButton_ != nullptr)
        removeButton_->setEnabled(customTableView()->selectionModel()->hasSelection());
}

/// Each removal changes the rows.
void MVPrefsIgnored::removeIgnoredApp() {
    QStringList names;
    for (const int row : customTable_->selectedRows())
        names.prepend(custom_.nameAt(row));
    for (const QString& name : std::as_const(names))
        dependencies_.ignoredApps.removeCustomIgnore(name);
}

void MVPrefsIgnored::addIgnoredApp() {
    if (addSheet_ == nullptr) {
        addSheet_ = new AddIgnoredAppSheet(
            *view().window(), [this](const QString& typed) { return warningFor(typed); });
        connect(addSheet_, &AddIgnoredAppSheet::action, this, &MVPrefsIgnored::addAction);
    }
    completed_ = dependencies_.knownPrograms();
    QStringList names;
    for (const KnownProgram& program : std::as_const(completed_))
        names += platform::oneLineText(program.displayName);
    addSheet_->begin(names);
}

void MVPrefsIgnored::addAction(int tag) {
    const QString typed = addSheet_->addTextField().text();
    if (tag == AddIgnoredAppSheet::confirm && !typed.trimmed().isEmpty())
        dependencies_.ignoredApps.addCustomIgnore(processNameFor(typed));
    addSheet_->end(tag);
}

QString MVPrefsIgnored::processNameFor(const QString& typed) const {
    const auto found = std::ranges::find(completed_, typed, [](const KnownProgram& program) {
        return platform::oneLineText(program.displayName);
    });
    return found != completed_.end() ? found->processName : typed;
}

QString MVPrefsIgnored::warningFor(const QString& typed) const {
    if (!dependencies_.ignoredApps.isAppIgnored(processNameFor(typed)))
        return {};
    return formatted(Texts::tr("\"%@\" is ignored already."), platform::oneLineText(typed));
}

QIcon MVPrefsIgnored::imageForAppName(const QString& name) {
    const QString key = name.toLower();
    const auto known = icons_.constFind(key);
    return known != icons_.cend()
               ? *known
               : *icons_.insert(key, imageOf(dependencies_.workspace.iconForApplication(name)));
}

void MVPrefsIgnored::windowWillClose() {
    if (addSheet_ != nullptr && addSheet_->isVisible())
        addSheet_->end(AddIgnoredAppSheet::cancel);
}
