#include "ui/support/SupportWindow.h"

#include "framework/support/SavedArchive.h"
#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "ui/support/SupportEntryList.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <algorithm>

using platform::formatted;

namespace {

constexpr QSize usualSize(760, 600);
constexpr int commentLines = 3;

/// Not the archive's own name, which is that of a temporary file.
QString suggestedName() {
    return formatted(QStringLiteral("%@-SupportInfo-%@.xar"), QCoreApplication::applicationName(),
                     QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-HHmm")));
}

bool hasSystemLog(const std::vector<SupportEntry>& entries) {
    return std::any_of(entries.begin(), entries.end(), [](const SupportEntry& entry) {
        return entry.name.startsWith(QLatin1String("System Log"));
    });
}

} // namespace

SupportWindow::SupportWindow(Dependencies dependencies, QWidget* parent)
    : MVCustomWindow(new QWidget, closable | miniaturizable, parent)
    , dependencies_(std::move(dependencies))
    , report_(dependencies_.sources, dependencies_.bundle)
    , entries_(new SupportEntryList)
    , email_(new QLineEdit)
    , comment_(new QPlainTextEdit)
    , fullProfile_(new QCheckBox(Texts::tr("Full system profile")))
    , screenshots_(new QCheckBox(Texts::tr("Pictures of this program's windows")))
    , remark_(new QLabel)
    , status_(new QLabel)
    , progress_(new QProgressBar)
    , buttons_(new QDialogButtonBox) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(Texts::tr("Support Information"));
    resize(usualSize);
    report_.setHandler(dependencies_.storeHandler);
    report_.setWindowsToExcludeFromScreenshots({this});
    auto* const explanation = new QLabel(
        Texts::tr("This helps to find out what is wrong. Names, addresses and the like have been "
                  "replaced. Select an entry to read it, and uncheck what you want to leave out."));
    explanation->setWordWrap(true);
    remark_->setWordWrap(true);
    makeButtons();
    contentView().setAutoFillBackground(true);
    const auto color = [this] { contentView().setPalette(themePalette()); };
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, color);
    color();
    auto* const layout = new QVBoxLayout(&contentView());
    layout->addWidget(explanation);
    layout->addWidget(entries_, 1);
    layout->addWidget(remark_);
    layout->addWidget(makeOptions());
    layout->addWidget(makeForm());
    layout->addWidget(makeProgress());
    layout->addWidget(buttons_);
    collect();
}

SupportWindow::~SupportWindow() {
    report_.cancel();
}

QWidget* SupportWindow::makeForm() {
    auto* const form = new QWidget;
    auto* const layout = new QFormLayout(form);
    layout->setContentsMargins({});
    comment_->setTabChangesFocus(true);
    comment_->setFixedHeight(comment_->fontMetrics().lineSpacing() * (commentLines + 1));
    email_->setPlaceholderText(Texts::tr("If you want an answer"));
    layout->addRow(Texts::tr("&Comment:"), comment_);
    layout->addRow(Texts::tr("&E-mail:"), email_);
    return form;
}

QWidget* SupportWindow::makeOptions() {
    auto* const options = new QWidget;
    auto* const layout = new QHBoxLayout(options);
    layout->setContentsMargins({});
    for (QCheckBox* const option : {fullProfile_, screenshots_}) {
        layout->addWidget(option);
        connect(option, &QCheckBox::toggled, this, &SupportWindow::collect);
    }
    layout->addStretch();
    return options;
}

QWidget* SupportWindow::makeProgress() {
    auto* const line = new QWidget;
    auto* const layout = new QHBoxLayout(line);
    layout->setContentsMargins({});
    progress_->setRange(0, 0);
    progress_->setTextVisible(false);
    status_->setObjectName(QStringLiteral("status"));
    layout->addWidget(status_, 1);
    layout->addWidget(progress_);
    return line;
}

void SupportWindow::makeButtons() {
    QPushButton* const cancel =
        buttons_->addButton(Texts::tr("Cancel"), QDialogButtonBox::RejectRole);
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &QWidget::close);
    if (const auto server = QNSupportLog::serverURL(dependencies_.bundle)) {
        send_ = buttons_->addButton(formatted(Texts::tr("Send to %@"), server->host()),
                                    QDialogButtonBox::ActionRole);
        send_->setAutoDefault(false);
        connect(send_, &QPushButton::clicked, this, &SupportWindow::send);
    }
    save_ = buttons_->addButton(Texts::tr("Save…"), QDialogButtonBox::AcceptRole);
    connect(save_, &QPushButton::clicked, this, &SupportWindow::save);
}

void SupportWindow::enter(State state, const QString& status) {
    const bool isReady = state == State::reviewing;
    entries_->setEnabled(isReady);
    save_->setEnabled(isReady);
    save_->setDefault(true); // a disabled button loses it
    if (send_ != nullptr)
        send_->setEnabled(isReady);
    email_->setEnabled(state != State::working);
    comment_->setEnabled(state != State::working);
    fullProfile_->setEnabled(state != State::working);
    screenshots_->setEnabled(state != State::working);
    progress_->setVisible(!isReady);
    status_->setText(status);
}

/// What had been unchecked stays so.
void SupportWindow::collect() {
    report_.setUseFullSystemProfile(fullProfile_->isChecked());
    report_.setIncludeAppScreenshots(screenshots_->isChecked());
    report_.setLeftOut(entries_->leftOut());
    entries_->clear();
    remark_->clear();
    report_.collectForReview(
        [this](const QString& text, auto /*stage*/) { enter(State::collecting, text); },
        [this] { hasCollected(); });
}

void SupportWindow::hasCollected() {
    prepare();
    entries_->showEntries(
        report_.reviewedEntries(), QLatin1String(QNSupportLog::infoName),
        [this] {
            prepare();
            return report_.infoRecord();
        },
        report_.leftOut());
    if (!hasSystemLog(report_.reviewedEntries()))
        remark_->setText(Texts::tr("The system's log has nothing about this program."));
    enter(State::reviewing);
}

void SupportWindow::prepare() {
    report_.setUserEmail(email_->text());
    report_.setUserComment(comment_->toPlainText());
}

void SupportWindow::save() {
    const QString file = dependencies_.chooseFile(this, suggestedName());
    if (file.isEmpty())
        return;
    prepare();
    report_.setLeftOut(entries_->leftOut());
    report_.generatePostDictionary(
        [this](const QString& text, auto /*stage*/) { enter(State::working, text); },
        [this, file](const QVariantMap& form) { saveArchive(file, form); });
}

void SupportWindow::saveArchive(const QString& file, const QVariantMap& form) {
    enter(State::reviewing, ::saveArchive(file, form).status);
}

void SupportWindow::send() {
    prepare();
    report_.setLeftOut(entries_->leftOut());
    report_.submitWithHandler(
        [this](const QString& text, QNSupportLog::Stage stage) { sendingStatus(text, stage); });
}

void SupportWindow::sendingStatus(const QString& text, QNSupportLog::Stage stage) {
    switch (stage) {
    case QNSupportLog::collecting:
    case QNSupportLog::sending: {
        constexpr double whole = 100;
        const bool isSent = text == formatted(Texts::tr("Sending (%.0f%%)…"), whole);
        enter(State::working, isSent ? Texts::tr("Waiting for the server…") : text);
        break;
    }
    case QNSupportLog::accepted:
        enter(State::reviewing, Texts::tr("Thank you!"));
        break;
    case QNSupportLog::failed:
        enter(State::reviewing, Texts::tr("An error occurred while sending.") + QLatin1Char(' ') +
                                    Texts::tr("Please try again."));
        break;
    }
}

void SupportWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        MVCustomWindow::keyPressEvent(event);
}

void SupportWindow::closeEvent(QCloseEvent* event) {
    report_.cancel();
    MVCustomWindow::closeEvent(event);
}

QString SupportWindow::askForFile(QWidget* parent, const QString& name) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileDialog::getSaveFileName(parent, Texts::tr("Save Support Information"),
                                        folder + QLatin1Char('/') + name);
}
