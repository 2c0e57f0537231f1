#include "app/HelperState.h"

#include <QScopeGuard>

#include <utility>

HelperState::HelperState(std::function<void(bool isShown)> showHelper, QString whyUnavailable)
    : showHelper_(std::move(showHelper)), whyUnavailable_(std::move(whyUnavailable)) {}

void HelperState::change(bool isShown) {
    ++changes_;
    Q_EMIT changed();
    const auto over = qScopeGuard([this] {
        --changes_;
        Q_EMIT changed();
    });
    showHelper_(isShown);
}
