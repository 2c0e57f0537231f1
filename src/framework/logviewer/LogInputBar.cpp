#include "framework/logviewer/LogInputBar.h"

#include "platform/text/Texts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

LogInputBar::LogInputBar(const QString& title, bool hasSteps, QWidget* parent)
    : QWidget(parent), input_(new QLineEdit), message_(new QLabel) {
    setAutoFillBackground(true);
    setVisible(false);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    auto* const label = new QLabel(title);
    label->setBuddy(input_);
    layout->addWidget(label);
    layout->addWidget(input_, 1);
    if (hasSteps) {
        addButton(*layout, Qt::UpArrow, Texts::tr("Previous"), &LogInputBar::previousWanted);
        addButton(*layout, Qt::DownArrow, Texts::tr("Next"), &LogInputBar::nextWanted);
    }
    layout->addWidget(message_, 1);
    auto* const closing = new QToolButton;
    closing->setText(QStringLiteral("\u2715"));
    closing->setAccessibleName(Texts::tr("Close"));
    closing->setAutoRaise(true);
    connect(closing, &QToolButton::clicked, this, &LogInputBar::close);
    layout->addWidget(closing);
    input_->setAccessibleName(title);
    connect(input_, &QLineEdit::textEdited, this, &LogInputBar::edited);
}

void LogInputBar::addButton(QHBoxLayout& layout, Qt::ArrowType arrow, const QString& name,
                            void (LogInputBar::*wanted)()) {
    auto* const button = new QToolButton;
    button->setArrowType(arrow);
    button->setAccessibleName(name);
    button->setToolTip(name);
    button->setAutoRaise(true);
    connect(button, &QToolButton::clicked, this, wanted);
    layout.addWidget(button);
}

void LogInputBar::open() {
    show();
    input_->setFocus();
    input_->selectAll();
}

void LogInputBar::close() {
    hide();
    Q_EMIT closed();
}

QString LogInputBar::text() const {
    return input_->text();
}

void LogInputBar::setMessage(const QString& message) {
    message_->setText(message);
}

void LogInputBar::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape)
        close();
    else if (isReturn && event->modifiers().testFlag(Qt::ShiftModifier))
        Q_EMIT previousWanted();
    else if (isReturn)
        Q_EMIT entered();
    else
        QWidget::keyPressEvent(event);
}
