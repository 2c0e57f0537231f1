#include "app/LaunchSequence.h"

#include "framework/application/ExceptionPlaces.h"
#include "platform/base/ExceptionReport.h"

#include <utility>

namespace {

LaunchSequence::Observer& observer() {
    static auto* const observer = new LaunchSequence::Observer;
    return *observer;
}

} // namespace

LaunchSequence::LaunchSequence(std::function<bool()> isEnding) : isEnding_(std::move(isEnding)) {}

void LaunchSequence::run(const char* step, const std::function<void()>& work) const {
    if (isEnding_())
        return;
    platform::guarded(kExceptionInLaunchStep, work);
    if (observer())
        observer()(step);
}

void LaunchSequence::observe(Observer newObserver) {
    observer() = std::move(newObserver);
}
