#include "ui/VolumeMenu.h"

#include "look/window/MenuLook.h"
#include "model/UndoHistory.h"
#include "platform/text/Texts.h"

#include <QRegularExpression>

namespace {

/// Texts in a menu must not create mnemonics.
QString plainTitle(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

/// Without its mnemonic, and without the dots of an entry that asks for more.
QString meaningOf(const QAction& entry) {
    static const QRegularExpression mark(QStringLiteral("&(.)"));
    return entry.text().replace(mark, QStringLiteral("\\1")).remove(QChar(u'…'));
}

} // namespace

VolumeMenu::VolumeMenu(QWidget& window)
    : QMenu(&window)
    , window_(window)
    , undo_(makeKey(Texts::tr("&Undo"), {Qt::CTRL | Qt::Key_Z}, &VolumeMenu::undoWanted))
    , redo_(makeKey(Texts::tr("&Redo"), {Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y},
                    &VolumeMenu::redoWanted))
    , recommend_(
          makeKey(Texts::tr("Re&commend…"), {Qt::CTRL | Qt::Key_R}, &VolumeMenu::recommendWanted))
    , close_(
          makeKey(Texts::tr("Close &Window"), {Qt::CTRL | Qt::Key_W}, &VolumeMenu::closeWanted)) {
    followTheme(*this);
    line_ = addSeparator();
    addEntry(Texts::tr("&Preferences…"), {Qt::CTRL | Qt::Key_Comma},
             &VolumeMenu::preferencesWanted);
    addEntry(Texts::tr("&Ignored Programs…"), {Qt::CTRL | Qt::Key_I}, &VolumeMenu::ignoredWanted);
    addMoreContrast();
    addSeparator();
    addEntry(Texts::tr("&Log"), {Qt::CTRL | Qt::Key_L}, &VolumeMenu::logWanted);
    addEntry(Texts::tr("&Support Information…"), {Qt::CTRL | Qt::SHIFT | Qt::Key_I},
             &VolumeMenu::supportWanted);
    addSeparator();
    addEntry(Texts::tr("&Keys"), {Qt::Key_F1}, &VolumeMenu::keysWanted);
    uninstall_ = addEntry(Texts::tr("U&ninstall…"), {Qt::CTRL | Qt::SHIFT | Qt::Key_Delete},
                          &VolumeMenu::uninstallWanted);
    addEntry(Texts::tr("&About"), {Qt::CTRL | Qt::Key_F1}, &VolumeMenu::aboutWanted);
    addSeparator();
    quit_ = addEntry(Texts::tr("&Quit"), {Qt::CTRL | Qt::Key_Q}, &VolumeMenu::quitWanted);
    makeKey(Texts::tr("Minimize"), {Qt::CTRL | Qt::Key_M}, &VolumeMenu::minimizeWanted);
    makeKey(Texts::tr("Zoom"), {Qt::CTRL | Qt::SHIFT | Qt::Key_M}, &VolumeMenu::zoomWanted);
    makeKey(Texts::tr("Open the menu"), {Qt::Key_F10}, &VolumeMenu::openWanted);
    setCanRecommend(false);
    showHistory(UndoHistory({}));
}

/// Of the window, not yet of the menu, which cuts its connections with what is removed from it.
QAction* VolumeMenu::makeKey(const QString& title, const QList<QKeySequence>& keys,
                             void (VolumeMenu::*wanted)()) {
    auto* const entry = new QAction(title, this);
    entry->setShortcuts(keys);
    connect(entry, &QAction::triggered, &window_, [this, wanted] { Q_EMIT(this->*wanted)(); });
    window_.addAction(entry);
    return entry;
}

QAction* VolumeMenu::addEntry(const QString& title, const QList<QKeySequence>& keys,
                              void (VolumeMenu::*wanted)()) {
    QAction* const entry = makeKey(title, keys, wanted);
    addAction(entry);
    return entry;
}

void VolumeMenu::setPresent(QAction& entry, QAction& before, bool isPresent) {
    if (isPresent)
        insertAction(&before, &entry);
    else
        removeAction(&entry);
}

void VolumeMenu::showHistory(const UndoHistory& history) {
    const auto show = [this](QAction& entry, const QString& title, const QString& what) {
        entry.setText(what.isEmpty() ? title : title + QLatin1Char(' ') + plainTitle(what));
        entry.setEnabled(!what.isEmpty());
        setPresent(entry, *line_, !what.isEmpty());
    };
    show(*undo_, Texts::tr("&Undo"), history.undoText());
    show(*redo_, Texts::tr("&Redo"), history.redoText());
    line_->setVisible(undo_->isEnabled() || redo_->isEnabled());
}

void VolumeMenu::setCanRecommend(bool isPossible) {
    recommend_->setEnabled(isPossible);
    setPresent(*recommend_, *uninstall_, isPossible);
}

void VolumeMenu::setCloses(bool isSeparate) {
    setPresent(*close_, *quit_, isSeparate);
}

QList<VolumeMenu::Key> VolumeMenu::keys() const {
    QList<Key> all;
    const auto actions = window_.actions();
    for (const QAction* const entry : actions) {
        if (entry->shortcuts().isEmpty() || (entry == recommend_ && !entry->isEnabled()))
            continue;
        const QString title = entry == undo_   ? Texts::tr("Undo")
                              : entry == redo_ ? Texts::tr("Redo")
                                               : meaningOf(*entry);
        all += {entry->shortcut().toString(QKeySequence::NativeText), title};
    }
    return all;
}

void VolumeMenu::addMoreContrast() {
    moreContrast_ = addAction(Texts::tr("More Con&trast"));
    moreContrast_->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    moreContrast_->setCheckable(true);
    connect(moreContrast_, &QAction::triggered, this, &VolumeMenu::moreContrastWanted);
    window_.addAction(moreContrast_);
}

void VolumeMenu::showMoreContrast(bool isWanted) {
    moreContrast_->setChecked(isWanted);
}
