#include "look/window/ProblemBar.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/AccessibleWindow.h"
#include "look/window/BarButton.h"
#include "look/window/BarText.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int margin = 12;
constexpr int gap = 8;
constexpr int signSize = 24;

/// A triangle with an exclamation mark, in a square of its size.
void drawSign(QPainter& painter, const QColor& color, const QColor& background) {
    constexpr double middle = signSize / 2.0;
    QPainterPath triangle;
    triangle.moveTo(middle, 2);
    triangle.lineTo(signSize - 1, signSize - 3);
    triangle.lineTo(1, signSize - 3);
    triangle.closeSubpath();
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(color);
    painter.drawPath(triangle);
    painter.setPen(QPen(background, 2.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(middle, 9), QPointF(middle, 14));
    painter.drawPoint(QPointF(middle, 18));
}

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
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    painter.translate(
        QPoint(isMirrored ? width() - margin - signSize : margin, (height() - signSize) / 2));
    drawSign(painter, theme.displayNameActivityColor(), background);
}
