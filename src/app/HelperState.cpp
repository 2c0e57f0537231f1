#include "app/HelperState.h"

#include <utility>

HelperState::HelperState(std::function<void(bool isShown)> showHelper, QString whyUnavailable)
    : showHelper_(std::move(showHelper)), whyUnavailable_(std::move(whyUnavailable)) {}

void HelperState::change(bool isShown) {
    isChanging_ = true;
    Q_EMIT changed();
    showHelper_(isShown);
    isChanging_ = false;
    Q_EMIT changed();
}
