#include "look/theme/HighContrastStyle.h"

#include "look/theme/CurrentTheme.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

#include <utility>

namespace {

/// The application tells of its new style, so this is called again before it returns.
void useIfWanted() {
    static QString usual; // the style's name; empty while it is in use itself
    const bool isWanted = CurrentTheme::theme().isHighContrast();
    if (isWanted == !usual.isEmpty())
        return;
    if (isWanted) {
        usual = QApplication::style()->name();
        QApplication::setStyle(new HighContrastStyle(usual));
    } else {
        QApplication::setStyle(std::exchange(usual, {}));
    }
}

/// The style itself marks what has the keyboard.
bool isOutlined(const QStyleOption& option) {
    return !option.state.testFlag(QStyle::State_HasFocus);
}

void drawOutline(QPainter& painter, const QStyleOption& option, bool isRound) {
    const auto group =
        option.state.testFlag(QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(option.palette.color(group, QPalette::WindowText));
    painter.setBrush(Qt::NoBrush);
    const QRectF line = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    if (isRound)
        painter.drawEllipse(line);
    else
        painter.drawRect(line);
    painter.restore();
}

} // namespace

void HighContrastStyle::install() {
    [[maybe_unused]] static const auto following =
        QObject::connect(&CurrentTheme::shared(), &CurrentTheme::changed, &useIfWanted);
    useIfWanted();
}

HighContrastStyle::HighContrastStyle(const QString& name) : QProxyStyle(name) {}

void HighContrastStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                      QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isRound = element == PE_IndicatorRadioButton;
    const bool isBox = element == PE_IndicatorCheckBox || element == PE_FrameLineEdit ||
                       element == PE_Frame || element == PE_PanelButtonTool;
    if ((isRound || isBox) && isOutlined(*option))
        drawOutline(*painter, *option, isRound);
}

void HighContrastStyle::drawComplexControl(ComplexControl control,
                                           const QStyleOptionComplex* option, QPainter* painter,
                                           const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if ((control == CC_SpinBox || control == CC_ComboBox) && isOutlined(*option))
        drawOutline(*painter, *option, false);
}
