#include "framework/logviewer/LogFileCopy.h"
#include "framework/logviewer/LogInputBar.h"
#include "framework/logviewer/LogMoment.h"
#include "framework/logviewer/LogTableView.h"
#include "framework/logviewer/LogToolBar.h"
#include "framework/logviewer/QNLogTableViewer.h"
#include "look/window/MVCustomWindow.h"
#include "platform/text/ByteCount.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QAction>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>
#include <QUrl>

#include <algorithm>
#include <limits>

// What the user can do in the log's window.

using platform::formatted;
using QN::logviewer::LogSearch;

void QNLogTableViewer::makeActions() {
    using Viewer = QNLogTableViewer;
    table_->setContextMenuPolicy(Qt::ActionsContextMenu);
    addAction(Texts::tr("Find…"), {QKeySequence::Find}, &Viewer::openSearch);
    addAction(Texts::tr("Find Next"), {Qt::Key_F3}, &Viewer::findNext);
    addAction(Texts::tr("Find Previous"), {Qt::SHIFT | Qt::Key_F3}, &Viewer::findPrevious);
    addAction(Texts::tr("Filter"), {Qt::CTRL | Qt::Key_L}, &Viewer::openFilter);
    addAction(Texts::tr("Go to Time…"), {Qt::CTRL | Qt::Key_G}, &Viewer::openTime);
    toolBar_->menu().addSeparator();
    addAction(Texts::tr("Next Warning"), {Qt::Key_W}, &Viewer::nextWarning, true);
    addAction(Texts::tr("Previous Warning"), {Qt::SHIFT | Qt::Key_W}, &Viewer::previousWarning,
              true);
    addAction(Texts::tr("Next Error"), {Qt::Key_E}, &Viewer::nextError, true);
    addAction(Texts::tr("Previous Error"), {Qt::SHIFT | Qt::Key_E}, &Viewer::previousError, true);
    toolBar_->menu().addSeparator();
    addAction(Texts::tr("Wrap Lines"), {Qt::ALT | Qt::Key_Z}, &Viewer::toggleWrapping);
    toolBar_->menu().actions().last()->setCheckable(true);
    toolBar_->menu().actions().last()->setChecked(true);
    addAction(Texts::tr("Copy"), {QKeySequence::Copy}, &Viewer::copy, true);
    addAction(Texts::tr("Save a Copy…"), {QKeySequence::Save}, &Viewer::saveCopy);
    addAction(Texts::tr("Open Folder"), {}, &Viewer::openFolder);
    addAction(Texts::tr("Close Window"), {Qt::CTRL | Qt::Key_W}, &Viewer::closeWindow);
}

/// Keys of the table can be typed into a text elsewhere in the window.
void QNLogTableViewer::addAction(const QString& title, const QList<QKeySequence>& keys,
                                 void (QNLogTableViewer::*action)(), bool isKeyOfTable) {
    QAction* const entry = toolBar_->menu().addAction(title, this, action);
    entry->setShortcuts(keys);
    if (isKeyOfTable) {
        entry->setShortcutContext(Qt::WidgetShortcut);
        table_->addAction(entry);
    } else {
        window()->addAction(entry);
    }
}

void QNLogTableViewer::showDocumentRow(std::size_t row) {
    table_->setCurrentRow(filter_.rows().placeOf(row));
}

/// Where a search begins: the current row, or what is in sight.
std::size_t QNLogTableViewer::currentDocumentRow() const {
    const std::size_t count = numberOfRowsInTableView();
    if (table_->currentRow() < count)
        return documentRow(table_->currentRow());
    if (count == 0)
        return 0;
    return documentRow(table_->isAtEnd() ? count - 1 : std::min(table_->topRow(), count - 1));
}

void QNLogTableViewer::find(LogSearch::Direction direction, bool includesFrom) {
    if (search_.needle().isEmpty())
        openSearch();
    else
        search_.find(currentDocumentRow(), direction, includesFrom);
}

void QNLogTableViewer::findNext() {
    find(LogSearch::Direction::next, false);
}

void QNLogTableViewer::findPrevious() {
    find(LogSearch::Direction::previous, false);
}

void QNLogTableViewer::openSearch() {
    searchBar_->open();
    search_.setNeedle(searchBar_->text());
    table_->setNeedle(searchBar_->text());
}

void QNLogTableViewer::openTime() {
    timeBar_->setMessage({});
    timeBar_->open();
}

void QNLogTableViewer::openFilter() {
    toolBar_->openFilter();
}

/// The next row that is shown with a level from `least` to `most`.
void QNLogTableViewer::goToLevel(std::uint32_t least, std::uint32_t most, int direction) {
    const std::size_t count = numberOfRowsInTableView();
    const std::size_t current = table_->currentRow();
    std::size_t row = current;
    if (current >= count) // nothing is current: from the end in sight
        row = direction > 0 ? (count == 0 ? 0 : table_->topRow() - 1) : count;
    const auto step = static_cast<std::size_t>(direction);
    const auto isWanted = [&] {
        const std::uint32_t level = document_.index()[documentRow(row)].level();
        return level >= least && level <= most;
    };
    row += step;
    while (row < count && !isWanted()) // below 0 it is beyond count, too
        row += step;
    message_.clear();
    if (row < count)
        table_->setCurrentRow(row);
    else if (direction > 0)
        message_ = Texts::tr("No such message comes after this one.");
    else
        message_ = Texts::tr("No such message comes before this one.");
    updateNotice();
}

void QNLogTableViewer::nextWarning() {
    goToLevel(2, 2, 1);
}

void QNLogTableViewer::previousWarning() {
    goToLevel(2, 2, -1);
}

void QNLogTableViewer::nextError() {
    goToLevel(0, 1, 1);
}

void QNLogTableViewer::previousError() {
    goToLevel(0, 1, -1);
}

void QNLogTableViewer::goToTime() {
    const auto moment = QN::logviewer::momentOf(timeBar_->text());
    if (!moment) {
        timeBar_->setMessage(Texts::tr("Enter a time like 9:41 or 2014-03-07 09:41:05"));
        return;
    }
    const auto row = document_.rowAtTime(*moment, currentDocumentRow());
    timeBar_->setMessage(row ? QString() : Texts::tr("Nothing is so late"));
    if (row)
        showDocumentRow(*row);
}

void QNLogTableViewer::toggleWrapping() {
    table_->setWrapping(!table_->isWrapping());
}

void QNLogTableViewer::copy() {
    table_->copySelection();
}

/// What would take too much memory is not copied in part.
void QNLogTableViewer::copyRows(std::size_t first, std::size_t last) {
    constexpr std::size_t most = std::size_t{128} << 20U;
    std::size_t size = 0;
    for (std::size_t row = first; row <= last && size <= most; ++row)
        size += document_.sizeOf(documentRow(row));
    message_.clear();
    if (size > most) {
        message_ = Texts::tr("That is too much to copy. Save a copy of the log instead.");
    } else {
        QString text;
        for (std::size_t row = first; row <= last; ++row)
            text += document_.copyText(documentRow(row));
        QGuiApplication::clipboard()->setText(text);
    }
    updateNotice();
}

void QNLogTableViewer::saveCopy() {
    if (!document_.file())
        return;
    auto* const dialog = new QFileDialog(window(), Texts::tr("Save a Copy"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->selectFile(QFileInfo(path_).fileName());
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { saveCopyAs(chosen); });
    dialog->open();
}

void QNLogTableViewer::saveCopyAs(const QString& chosen) {
    const QString place = QFileInfo(chosen).canonicalFilePath(); // empty if there is no file
    const auto isPlaceOf = [&](const QString& log) {
        return !place.isEmpty() && place == QFileInfo(log).canonicalFilePath();
    };
    if (isPlaceOf(path_) || isPlaceOf(handlePath())) { // which the application writes to
        message_ = Texts::tr("That is the log itself. Choose another name.");
        updateNotice();
        return;
    }
    QN::logviewer::saveCopy(
        document_.file(), chosen, [viewer = QPointer(this), chosen](const QString& error) {
            if (!viewer)
                return;
            viewer->message_ = error.isEmpty()
                                   ? formatted(Texts::tr("Saved as %@"), chosen)
                                   : formatted(Texts::tr("The copy can't be saved: %@"), error);
            viewer->updateNotice();
        });
}

void QNLogTableViewer::openFolder() {
    if (!path_.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path_).absolutePath()));
}

void QNLogTableViewer::closeWindow() {
    window()->close();
}
