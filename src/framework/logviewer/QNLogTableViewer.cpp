#include "framework/logviewer/QNLogTableViewer.h"

#include "framework/logviewer/LogInputBar.h"
#include "framework/logviewer/LogTableView.h"
#include "framework/logviewer/LogToolBar.h"
#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "look/window/MVCustomWindow.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/window/WindowPositioning.h"

#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

using platform::formatted;
using QN::logviewer::LogDocument;
using QN::logviewer::LogFileState;
using QN::logviewer::LogSearch;

namespace {

constexpr QSize usualSize(860, 560);
constexpr QSize leastSize(420, 240);

} // namespace

std::unique_ptr<QNLogTableViewer>
QNLogTableViewer::logViewerWithHandle(const qnlog_handle* handle) {
    return std::make_unique<QNLogTableViewer>(handle);
}

QNLogTableViewer::QNLogTableViewer(const qnlog_handle* handle)
    : QNLogViewer(handle), search_(document_, [this](std::size_t row) {
        const auto& rows = filter_.rows();
        const std::size_t place = rows.placeOf(row);
        return place < rows.count() && rows.rowAt(place) == row;
    }) {
    setWindow(std::make_unique<MVCustomWindow>(makeContent()));
    window()->setWindowTitle(formatted(Texts::tr("%@ Log"), QCoreApplication::applicationName()));
    window()->setMinimumSize(leastSize);
    window()->resize(usualSize);
    platform::moveToCenter(*window(), *window()->screen());
    const auto color = [this] { window()->contentView().setPalette(themePalette()); };
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, color);
    color();
    makeActions();
    connectBars();
    connectSearch();
    table_->setFocus();
}

QNLogTableViewer::~QNLogTableViewer() = default;

QWidget* QNLogTableViewer::makeContent() {
    auto* const content = new QWidget;
    content->setAutoFillBackground(true);
    auto* const layout = new QVBoxLayout(content);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    toolBar_ = new LogToolBar;
    table_ = new LogTableView(*this);
    searchBar_ = new LogInputBar(Texts::tr("Find:"), true);
    timeBar_ = new LogInputBar(Texts::tr("Go to time:"), false);
    notice_ = new QLabel;
    notice_->setWordWrap(true);
    notice_->setMargin(6);
    notice_->setTextFormat(Qt::PlainText);
    layout->addWidget(toolBar_);
    layout->addWidget(table_, 1);
    layout->addWidget(searchBar_);
    layout->addWidget(timeBar_);
    layout->addWidget(notice_);
    return content;
}

void QNLogTableViewer::connectBars() {
    connect(toolBar_, &LogToolBar::fileChosen, this, [this] { openFile(toolBar_->file()); });
    connect(toolBar_, &LogToolBar::filterChanged, this, &QNLogTableViewer::applyFilter);
    connect(toolBar_, &LogToolBar::filterLeft, this, [this] { table_->setFocus(); });
    connect(&filter_, &QN::logviewer::LogFilter::grown, this, &QNLogTableViewer::takeFilteredRows);
    connect(searchBar_, &LogInputBar::edited, this, [this](const QString& text) {
        search_.setNeedle(text);
        table_->setNeedle(text);
        if (!text.isEmpty())
            find(LogSearch::Direction::previous, true);
    });
    connect(searchBar_, &LogInputBar::entered, this, &QNLogTableViewer::findNext);
    connect(searchBar_, &LogInputBar::nextWanted, this, &QNLogTableViewer::findNext);
    connect(searchBar_, &LogInputBar::previousWanted, this, &QNLogTableViewer::findPrevious);
    connect(searchBar_, &LogInputBar::closed, this, [this] {
        search_.setNeedle({});
        table_->setNeedle({});
        table_->setFocus();
    });
    connect(timeBar_, &LogInputBar::entered, this, &QNLogTableViewer::goToTime);
    connect(timeBar_, &LogInputBar::closed, this, [this] { table_->setFocus(); });
}

void QNLogTableViewer::connectSearch() {
    connect(&search_, &LogSearch::found, this, [this](std::size_t row, bool hasWrapped) {
        showDocumentRow(row);
        table_->showMatch();
        updateCount();
        if (hasWrapped)
            searchBar_->setMessage(Texts::tr("Went on at the other end"));
    });
    connect(&search_, &LogSearch::foundNothing, this, &QNLogTableViewer::updateCount);
    connect(&search_, &LogSearch::countChanged, this, &QNLogTableViewer::updateCount);
}

void QNLogTableViewer::updateCount() {
    if (search_.needle().isEmpty())
        searchBar_->setMessage({});
    else if (search_.count() == 0)
        searchBar_->setMessage(search_.isDone() ? Texts::tr("Not found") : QString());
    else
        searchBar_->setMessage(formatted(Texts::tr("Rows with it: %@"),
                                         QLocale().toString(qulonglong{search_.count()})));
}

void QNLogTableViewer::showWindow() {
    if (!window()->isVisible()) {
        clear();
        path_ = handlePath();
        toolBar_->setLog(path_);
    }
    QNLogViewer::showWindow();
}

void QNLogTableViewer::windowWillClose() {
    QNLogViewer::windowWillClose();
    clear();
}

void QNLogTableViewer::openFile(const QString& path) {
    if (path == path_ || path.isEmpty())
        return;
    clear();
    path_ = path;
    readFile(path);
}

void QNLogTableViewer::clear() {
    failure_.clear();
    message_.clear();
    document_.open(nullptr);
    takeChange({.isReset = true});
    table_->scrollToEnd();
}

void QNLogTableViewer::logReadSucceeded(std::vector<QN::logviewer::LogDelivery> deliveries) {
    const bool isNew = !document_.file();
    if (isNew)
        document_.open(reader()->file());
    LogDocument::Change change = document_.take(std::move(deliveries));
    change.isReset = change.isReset || isNew; // the filter and the search have no file yet
    takeChange(change);
}

void QNLogTableViewer::logReadFailed(const QString& reason) {
    failure_ = reason;
    updateHint();
}

/// After a reset no row of the table is there any more, so none may be looked at.
void QNLogTableViewer::takeChange(const LogDocument::Change& change) {
    if (change.isReset || change.rowsBefore > 0) {
        if (change.isReset)
            sight_ = LogTableView::Sight{};
        else
            rememberSight();
        sight_->row += change.rowsBefore;
        if (sight_->current != LogTableView::noRow)
            sight_->current += change.rowsBefore;
        table_->setHint({});
        filter_.documentReplaced();
        search_.documentReplaced();
        restoreSight();
    } else if (change.hasGrown) {
        filter_.documentGrew();
        search_.documentGrew();
        table_->rowsAdded();
    }
    updateHint();
    updateNotice();
}

/// What is in sight stays there if it is still shown.
void QNLogTableViewer::applyFilter() {
    rememberSight();
    table_->setHint({});
    filter_.set(toolBar_->levels(), toolBar_->filterText());
    restoreSight();
    updateHint();
}

void QNLogTableViewer::rememberSight() {
    if (sight_)
        return; // what was in sight before the last filter is not there yet
    const auto toDocument = [this](std::size_t row) {
        return row < numberOfRowsInTableView() ? documentRow(row) : LogTableView::noRow;
    };
    sight_ = table_->sight();
    sight_->row = toDocument(sight_->row);
    sight_->current = toDocument(sight_->current);
}

/// As soon as the filter has come to it.
void QNLogTableViewer::restoreSight() {
    const auto& rows = filter_.rows();
    const auto toTable = [&](std::size_t row) {
        return row != LogTableView::noRow ? rows.placeOf(row) : row;
    };
    LogTableView::Sight sight = *sight_;
    sight.row = toTable(sight.row);
    sight.current = toTable(sight.current);
    table_->rowsReplaced(sight);
    if (filter_.hasReached(sight.isAtEnd ? LogTableView::noRow : sight_->row))
        sight_.reset();
}

void QNLogTableViewer::takeFilteredRows() {
    if (sight_)
        restoreSight();
    else
        table_->rowsAdded();
    updateHint();
}

void QNLogTableViewer::updateHint() {
    const bool hasRows = document_.index().size() > 0;
    if (!failure_.isEmpty())
        table_->setHint(formatted(Texts::tr("The log can't be read: %@"), failure_));
    else if (hasRows && filter_.rows().isFiltered())
        table_->setHint(hintOfFilter());
    else if (document_.index().hasStopped())
        table_->setHint(Texts::tr("This file does not begin like a log."));
    else if (document_.isCaughtUp())
        table_->setHint(Texts::tr("Nothing has been logged yet."));
    else
        table_->setHint({});
}

/// While a search goes on nothing is sure, except that rows had not passed before some were added.
QString QNLogTableViewer::hintOfFilter() const {
    const QString none = Texts::tr("No row passes the filter.");
    const bool isSure = filter_.hasReached(LogTableView::noRow) || table_->hint() == none;
    return isSure ? none : QString();
}

void QNLogTableViewer::updateNotice() {
    QStringList lines;
    if (document_.state() == LogFileState::moved)
        lines +=
            Texts::tr("The file has been renamed or replaced. This is the one that was opened.");
    if (document_.state() == LogFileState::deleted)
        lines += Texts::tr("The file has been deleted. This is what it holds.");
    if (document_.hasBeenCut())
        lines += Texts::tr("The file has been cut. What it held before is gone.");
    if (const std::uint64_t dropped = document_.index().droppedLines(); dropped > 0)
        lines += formatted(Texts::tr("Lines left out because they are not UTF-8 text: %@"),
                           QLocale().toString(qulonglong{dropped}));
    if (!message_.isEmpty())
        lines += message_;
    const QString text = lines.join(QLatin1Char('\n'));
    if (notice_->text() != text)
        notice_->setText(text);
    notice_->setVisible(!text.isEmpty());
}

std::size_t QNLogTableViewer::documentRow(std::size_t row) const {
    return filter_.rows().rowAt(row);
}

QNLogEntry QNLogTableViewer::entryOfRow(std::size_t row) const {
    return document_.entry(documentRow(row));
}

LogTableSource::RowSize QNLogTableViewer::sizeOfRow(std::size_t row) const {
    constexpr std::size_t headSize = 17; // of a line, with its line feed
    const std::size_t place = documentRow(row);
    const std::size_t size = document_.shownSize(place);
    return {size > headSize ? size - headSize : 0, document_.index()[place].lines()};
}

std::optional<QColor> QNLogTableViewer::backgroundColorForRow(std::size_t row) const {
    return colorForLevel(document_.index()[documentRow(row)].level());
}

std::optional<QColor> QNLogTableViewer::colorForLevel(std::uint32_t level) {
    constexpr float violetRed = 0.7607843137254902F;
    switch (level) {
    case 0:
        return QColor::fromRgbF(violetRed, 0.7333333333333333F, 1);
    case 1:
        return QColor::fromRgbF(1, 0.7803921568627451F, 0.7803921568627451F);
    case 2:
        return QColor::fromRgbF(0.996078431372549F, 0.9568627450980393F, 0.611764705882353F);
    case 4:
        return QColor::fromRgbF(0.6901960784313725F, 0.9411764705882353F, 0.9411764705882353F);
    case 15:
        return QColor::fromRgbF(0.7843137254901961F, 0.7843137254901961F, 0.7843137254901961F);
    case 16:
        return QColor::fromRgbF(0.9411764705882353F, 0.9411764705882353F, 0.9411764705882353F);
    default:
        return std::nullopt;
    }
}
