#include "ui/VolumeMenu.h"

#include "model/UndoHistory.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QCoreApplication>

using platform::formatted;

namespace {

/// Texts in a menu must not create mnemonics.
QString plainTitle(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

VolumeMenu::VolumeMenu(QWidget& window) : QMenu(&window), window_(window) {
    const QString name = QCoreApplication::applicationName();
    const auto named = [&](const QString& title) { return formatted(title, plainTitle(name)); };
    QMenu* const file = addPart(Texts::tr("&File"));
    addEntry(file, Texts::tr("U&ninstall…"), {}, &VolumeMenu::uninstallWanted);
    file->addSeparator();
    addEntry(file, Texts::tr("&Close Window"), {Qt::CTRL | Qt::Key_W}, &VolumeMenu::closeWanted);
    addEntry(file, named(Texts::tr("&Quit %@")), {Qt::CTRL | Qt::Key_Q}, &VolumeMenu::quitWanted);

    QMenu* const edit = addPart(Texts::tr("&Edit"));
    undo_ = addEntry(edit, {}, {Qt::CTRL | Qt::Key_Z}, &VolumeMenu::undoWanted);
    redo_ = addEntry(edit, {}, {Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y},
                     &VolumeMenu::redoWanted);
    edit->addSeparator();
    // The key itself is the grid's.
    ignore_ = addEntry(edit, {}, {}, &VolumeMenu::ignoreWanted);
    edit->addSeparator();
    addEntry(edit, Texts::tr("&Preferences…"), {Qt::CTRL | Qt::Key_Comma},
             &VolumeMenu::preferencesWanted);
    showHistory(UndoHistory({}));
    showSelection({});

    QMenu* const windows = addPart(Texts::tr("&Window"));
    addEntry(windows, Texts::tr("&Minimize"), {Qt::CTRL | Qt::Key_M}, &VolumeMenu::minimizeWanted);
    addEntry(windows, Texts::tr("&Zoom"), {}, &VolumeMenu::zoomWanted);
    windows->addSeparator();
    addEntry(windows, Texts::tr("&Log"), {Qt::CTRL | Qt::Key_L}, &VolumeMenu::logWanted);

    QMenu* const help = addPart(Texts::tr("&Help"));
    addEntry(help, Texts::tr("&Support Information…"), {}, &VolumeMenu::supportWanted);
    addEntry(help, named(Texts::tr("&About %@")), {}, &VolumeMenu::aboutWanted);
    addOpening(Qt::Key_F10, nullptr);
}

QMenu* VolumeMenu::addPart(const QString& title) {
    QMenu* const part = addMenu(title);
    addOpening(QKeySequence::mnemonic(title), part->menuAction());
    return part;
}

/// The window has the entry too, for its key.
QAction* VolumeMenu::addEntry(QMenu* part, const QString& title, const QList<QKeySequence>& keys,
                              void (VolumeMenu::*wanted)()) {
    QAction* const entry = part->addAction(title, this, wanted);
    entry->setShortcuts(keys);
    window_.addAction(entry);
    return entry;
}

void VolumeMenu::addOpening(const QKeySequence& key, QAction* chosen) {
    auto* const opening = new QAction(this);
    opening->setShortcut(key);
    connect(opening, &QAction::triggered, this, [this, chosen] { Q_EMIT openWanted(chosen); });
    window_.addAction(opening);
}

void VolumeMenu::showHistory(const UndoHistory& history) {
    const auto show = [](QAction& entry, const QString& title, const QString& what) {
        entry.setText(what.isEmpty() ? title : title + QLatin1Char(' ') + plainTitle(what));
        entry.setEnabled(!what.isEmpty());
    };
    show(*undo_, Texts::tr("&Undo"), history.undoText());
    show(*redo_, Texts::tr("&Redo"), history.redoText());
}

void VolumeMenu::showSelection(const QString& name) {
    ignore_->setText(name.isEmpty() ? Texts::tr("&Ignore")
                                    : formatted(Texts::tr("Ignore \"%@\""), plainTitle(name)));
    ignore_->setEnabled(!name.isEmpty());
}
