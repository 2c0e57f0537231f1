#include "look/window/ProblemBar.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/AccessibleWindow.h"
#include "look/window/BarButton.h"
#include "look/window/BarText.h"
#include "look/window/Sign.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int margin = 12;
constexpr int gap = 8;

} // namespace

ProblemBar::ProblemBar(int height, QWidget* parent)
    : QWidget(parent), text_(new BarText), help_(new BarButton), details_(new BarButton) {
    installAccessibleWindow();
    setObjectName(QStringLiteral("problem"));
    setFixedHeight(height);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(margin, 0, margin, 0);
    layout->setSpacing(gap);
    layout->addSpacing(signSize + gap);
    layout->addWidget(text_, 1);
    layout->addWidget(help_);
    layout->addWidget(details_);
    connect(help_, &QPushButton::clicked, this, &ProblemBar::helpWanted);
    connect(details_, &QPushButton::clicked, this, &ProblemBar::detailsWanted);
    hide();
}

void ProblemBar::setContent(const Content& content) {
    const bool isNew = text_->text() != content.text;
    setAccessibleName(content.text);
    text_->setText(content.text);
    help_->setText(content.help);
    help_->setVisible(!content.help.isEmpty());
    details_->setText(content.details);
    details_->setVisible(!content.details.isEmpty());
    setVisible(!content.text.isEmpty());
    if (isNew && !content.text.isEmpty())
        announce();
}

QString ProblemBar::text() const {
    return text_->text();
}

void ProblemBar::announce() {
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void ProblemBar::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    const QColor background = theme.scrollerTrackBackgroundColor();
    const QColor line = theme.isHighContrast() ? theme.windowTitleBarTextColor()
                                               : theme.windowTitleBarGradientColor2();
    painter.fillRect(rect(), background);
    painter.fillRect(0, height() - 1, width(), 1, line);
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    painter.translate(
        QPoint(isMirrored ? width() - margin - signSize : margin, (height() - signSize) / 2));
    drawSign(painter, Sign::warning, background);
}
