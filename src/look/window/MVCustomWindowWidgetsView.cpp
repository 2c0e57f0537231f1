#include "look/window/MVCustomWindowWidgetsView.h"

#include <QStyle>

#include <algorithm>

namespace {

constexpr int gap = 2;

} // namespace

void MVCustomWindowWidgetsView::setButtons(const platform::TitleBarSettings::Buttons& kinds) {
    qDeleteAll(buttons_);
    buttons_.clear();
    for (const WindowButton::Kind kind : kinds) {
        auto* const button = new WindowButton(kind, this);
        connect(button, &WindowButton::clicked, this, [this, kind] { Q_EMIT pressed(kind); });
        button->show();
        buttons_.push_back(button);
    }
    updateGeometry();
    resizeEvent(nullptr);
}

WindowButton* MVCustomWindowWidgetsView::button(WindowButton::Kind kind) const {
    const auto found = std::ranges::find(buttons_, kind, &WindowButton::kind);
    return found != buttons_.end() ? *found : nullptr;
}

QSize MVCustomWindowWidgetsView::sizeHint() const {
    QSize size;
    for (const WindowButton* const button : buttons_)
        size = {size.width() + button->sizeHint().width() + gap,
                std::max(size.height(), button->sizeHint().height())};
    return size;
}

void MVCustomWindowWidgetsView::resizeEvent(QResizeEvent* /*event*/) {
    int left = gap / 2;
    for (WindowButton* const button : std::as_const(buttons_)) {
        const QSize size = button->sizeHint();
        const QRect place({left, (height() - size.height()) / 2}, size);
        button->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
        left += size.width() + gap;
    }
}
