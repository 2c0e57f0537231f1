#include "ui/support/ContentWindow.h"

#include "framework/support/QNSupportLog.h"
#include "platform/text/Texts.h"
#include "ui/support/SupportEntryList.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr QSize usualSize(760, 480);

} // namespace

ContentWindow::ContentWindow(QNSupportLog& report, QWidget* parent)
    : QDialog(parent), report_(report), entries_(new SupportEntryList), status_(new QLabel) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(Texts::tr("What Is Sent"));
    resize(usualSize);
    auto* const explanation = new QLabel(
        Texts::tr("Select an entry to read it, and uncheck what you want to leave out."));
    explanation->setWordWrap(true);
    status_->setObjectName(QStringLiteral("status"));
    auto* const buttons = new QDialogButtonBox;
    connect(buttons->addButton(Texts::tr("Done"), QDialogButtonBox::AcceptRole),
            &QPushButton::clicked, this, &QDialog::accept);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(explanation);
    layout->addWidget(entries_, 1);
    layout->addWidget(status_);
    layout->addWidget(buttons);
    if (!report_.reviewedEntries().empty()) {
        showEntries();
        return;
    }
    isCollecting_ = true;
    report_.collectForReview(
        [this](const QString& text, auto /*stage*/) { status_->setText(text); },
        [this] { showEntries(); });
}

ContentWindow::~ContentWindow() {
    if (isCollecting_)
        report_.cancel();
}

void ContentWindow::showEntries() {
    isCollecting_ = false;
    status_->clear();
    entries_->showEntries(
        report_.reviewedEntries(), QLatin1String(QNSupportLog::infoName),
        [this] { return report_.infoRecord(); }, report_.leftOut());
}

void ContentWindow::done(int result) {
    if (!isCollecting_)
        report_.setLeftOut(entries_->leftOut());
    QDialog::done(result);
}
