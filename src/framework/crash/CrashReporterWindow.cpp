#include "framework/crash/CrashReporterWindow.h"

#include "platform/text/Texts.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr int leastWidth = 520;
constexpr int commentLines = 4;
constexpr qsizetype mostCrashes = 5;

QLabel* plainLabel() {
    auto* const label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

} // namespace

CrashReporterWindow::CrashReporterWindow(const QString& sendText, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowStaysOnTopHint)
    , messageTextField_(plainLabel())
    , crashes_(plainLabel())
    , emailField_(new QLineEdit)
    , commentsField_(new QPlainTextEdit)
    , statusField_(plainLabel())
    , progressBar_(new QProgressBar)
    , sendButton_(new QPushButton(sendText))
    , cancelButton_(new QPushButton(Texts::tr("Cancel")))
    , contentButton_(new QPushButton(Texts::tr("Show &What Is Sent…")))
    , dontAskAgain_(new QCheckBox(Texts::tr("&Don't ask again"))) {
    setWindowTitle(Texts::tr("Crash Report"));
    setMinimumWidth(leastWidth);
    messageTextField_->setText(Texts::tr("APP, or a part of it, has ended unexpectedly."));
    QFont font = messageTextField_->font();
    font.setBold(true);
    messageTextField_->setFont(font);
    auto* const explanation = plainLabel();
    explanation->setText(
        Texts::tr("A report of it helps to find out why. It tells where in the program it "
                  "happened, and about this computer. Names, addresses and the like have been "
                  "replaced."));
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(messageTextField_);
    layout->addWidget(crashes_);
    layout->addWidget(explanation);
    layout->addWidget(makeForm());
    layout->addWidget(dontAskAgain_);
    layout->addWidget(makeButtons());
}

QWidget* CrashReporterWindow::makeForm() {
    auto* const form = new QWidget;
    auto* const layout = new QFormLayout(form);
    layout->setContentsMargins({});
    commentsField_->setTabChangesFocus(true);
    commentsField_->setFixedHeight(commentsField_->fontMetrics().lineSpacing() *
                                   (commentLines + 1));
    commentsField_->setPlaceholderText(Texts::tr("What did you do when it happened?"));
    emailField_->setPlaceholderText(Texts::tr("If you want an answer"));
    layout->addRow(Texts::tr("&Comment:"), commentsField_);
    layout->addRow(Texts::tr("&E-mail:"), emailField_);
    return form;
}

QWidget* CrashReporterWindow::makeButtons() {
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    statusField_->setObjectName(QStringLiteral("status"));
    progressBar_->setRange(0, 0);
    progressBar_->setTextVisible(false);
    progressBar_->hide();
    for (QPushButton* const button : {contentButton_, cancelButton_, sendButton_})
        button->setAutoDefault(false);
    layout->addWidget(contentButton_);
    layout->addWidget(statusField_, 1);
    layout->addWidget(progressBar_);
    layout->addWidget(cancelButton_);
    layout->addWidget(sendButton_);
    return row;
}

void CrashReporterWindow::setCrashes(const QStringList& crashes) {
    QStringList shown = crashes.mid(0, mostCrashes);
    if (crashes.size() > mostCrashes)
        shown.append(QStringLiteral("…"));
    crashes_->setText(shown.join(QLatin1Char('\n')));
}

void CrashReporterWindow::showCentred() {
    adjustSize();
    if (const QScreen* const screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    show();
    raise();
}
