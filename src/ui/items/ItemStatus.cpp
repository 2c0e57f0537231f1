#include "ui/items/ItemStatus.h"

#include "look/theme/CurrentTheme.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "ui/items/ItemLayout.h"

#include <QFontInfo>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>
#include <utility>

namespace {

constexpr int timeBright = 1000; // milliseconds
constexpr int padding = ItemLayout::statusPadding;
constexpr int gap = 7;
constexpr int signSize = 10;

/// What the font of all items yields; measured once.
struct Figures {
    QFont font;
    QString word;
    int digit = 0; ///< the width of the widest one
    int sign = 0;  ///< of the percent sign, and the blank before it
    int wordWidth = 0;
    bool isEven = true; ///< all digits are equally wide

    explicit Figures(const QFont& from) : font(from), word(Texts::tr("muted")) {
        if (const int height = QFontMetrics(font).height(); height > ItemLayout::nameHeight)
            font.setPixelSize(QFontInfo(font).pixelSize() * ItemLayout::nameHeight / height);
        const QFontMetrics metrics(font);
        for (char each = '0'; each <= '9'; ++each) {
            const int width = metrics.horizontalAdvance(QLatin1Char(each));
            isEven = isEven && (digit == 0 || width == digit);
            digit = std::max(digit, width);
        }
        sign = metrics.horizontalAdvance(QStringLiteral(" %"));
        wordWidth = metrics.horizontalAdvance(word);
    }

    [[nodiscard]] int percentWidth() const { return 3 * digit + sign; }

    static const Figures& of(const QFont& font) {
        static auto* kept = new std::pair(font, Figures(font));
        if (kept->first != font)
            *kept = {font, Figures(font)};
        return kept->second;
    }
};

} // namespace

ItemStatus::ItemStatus(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_Hover);
}

void ItemStatus::setState(const State& state) {
    if (state_ == state)
        return;
    const State before = std::exchange(state_, state);
    if (before.percent != state.percent && isVisible())
        bright_.start(timeBright, this);
    if (before.isMuted != state.isMuted)
        Q_EMIT sizeChanged();
    update();
}

void ItemStatus::setLit(bool isLit) {
    if (std::exchange(isLit_, isLit) != isLit)
        update();
}

QSize ItemStatus::sizeHint() const {
    const Figures& figures = Figures::of(font());
    const int word = state_.isMuted ? figures.wordWidth + gap : 0;
    return {word + signSize + gap + figures.percentWidth() + 2 * padding, ItemLayout::nameHeight};
}

QRect ItemStatus::percentPlace() const {
    const int width = Figures::of(font()).percentWidth() + 2 * padding;
    return QStyle::visualRect(layoutDirection(), rect(),
                              {this->width() - width, 2, width, height() - 4});
}

bool ItemStatus::isPressable(const QPoint& place) const {
    return state_.isControllable && percentPlace().contains(place);
}

void ItemStatus::setUnderMouse(bool isUnderMouse) {
    if (std::exchange(isPercentUnderMouse_, isUnderMouse) == isUnderMouse)
        return;
    if (isUnderMouse)
        setCursor(Qt::IBeamCursor);
    else
        unsetCursor();
    update();
}

bool ItemStatus::event(QEvent* event) {
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)
        setUnderMouse(isPressable(static_cast<QHoverEvent*>(event)->position().toPoint()));
    else if (event->type() == QEvent::HoverLeave)
        setUnderMouse(false);
    return QWidget::event(event);
}

void ItemStatus::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && isPressable(event->position().toPoint()))
        Q_EMIT percentPressed();
    else
        event->ignore();
}

void ItemStatus::timerEvent(QTimerEvent* event) {
    if (event->timerId() != bright_.timerId())
        return;
    bright_.stop();
    update();
}

QColor ItemStatus::color() const {
    const MVBlackTheme& theme = CurrentTheme::theme();
    return isLit_ || bright_.isActive() ? theme.detailBrightColor() : theme.detailColor();
}

void ItemStatus::paintEvent(QPaintEvent* /*event*/) {
    const Figures& figures = Figures::of(font());
    QPainter painter(this);
    painter.setFont(figures.font);
    painter.setPen(color());
    const QRect percent = percentPlace();
    if (isPercentUnderMouse_) {
        QColor light = CurrentTheme::theme().windowTitleBarTextColor();
        light.setAlphaF(0.14F);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(light);
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(QRectF(percent).adjusted(0.5, 1, -0.5, -1), 4, 4);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(color());
    }
    drawPercent(painter, percent);
    const auto before = [&](int width, int distance) {
        return QStyle::visualRect(
            layoutDirection(), rect(),
            {this->width() - percent.width() + padding - distance - width, 0, width, height()});
    };
    if (state_.isMuted)
        painter.drawText(before(figures.wordWidth, gap),
                         Qt::AlignCenter | Qt::TextSingleLine | Qt::TextDontClip, figures.word);
    if (state_.isPlaying)
        drawSign(painter, before(signSize, gap + (state_.isMuted ? figures.wordWidth + gap : 0)));
}

/// Each figure in a place of its own unless the font does that anyway. Always from left to right.
void ItemStatus::drawPercent(QPainter& painter, const QRect& place) const {
    const Figures& figures = Figures::of(font());
    const QString number = QString::number(state_.percent);
    QRect rest = place.adjusted(padding, 0, -padding, 0);
    constexpr int flags = Qt::AlignRight | Qt::AlignAbsolute | Qt::AlignVCenter |
                          Qt::TextSingleLine | Qt::TextDontClip;
    painter.setLayoutDirection(Qt::LeftToRight);
    if (figures.isEven) {
        painter.drawText(rest, flags, platform::formatted(QStringLiteral("%d %%"), state_.percent));
        return;
    }
    painter.drawText(rest, flags, QStringLiteral("%"));
    rest.setRight(rest.right() - figures.sign);
    for (qsizetype index = number.size() - 1; index >= 0; --index) {
        painter.drawText(
            QRect(rest.right() + 1 - figures.digit, rest.top(), figures.digit, rest.height()),
            Qt::AlignCenter | Qt::TextDontClip, QString(number[index]));
        rest.setRight(rest.right() - figures.digit);
    }
}

/// Three bars on whole pixels, which stand still. In the colour of what plays, except where nothing
/// is heard.
void ItemStatus::drawSign(QPainter& painter, const QRect& place) const {
    constexpr int heights[] = {5, 10, 7};
    constexpr int barWidth = 2;
    constexpr int step = 4;
    const QColor bar = state_.isMuted ? color() : CurrentTheme::theme().displayNameActivityColor();
    const int bottom = place.center().y() + signSize / 2;
    for (int index = 0; index < 3; ++index)
        painter.fillRect(place.left() + index * step, bottom - heights[index], barWidth,
                         heights[index], bar);
}
