#include "app/FinalSave.h"

#include "comm/MVComm.h"
#include "model/AppVolumeController.h"
#include "platform/base/MonotonicClock.h"
#include "platform/defaults/UserDefaults.h"

#include <algorithm>
#include <chrono>

using platform::UserDefaults;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds longestSaving{3000};

} // namespace

void FinalSave::save(AppVolumeController* controller) {
    if (controller != nullptr)
        controller->savePrefs();
    UserDefaults::standard().synchronize(longestSaving);
}

void FinalSave::saveAndDisconnect(AppVolumeController* controller, bool isServing) {
    const auto end = platform::MonotonicClock::now() + longestSaving;
    if (controller != nullptr && !controller->shutdown(longestSaving))
        return;
    if (isServing)
        MVComm::sharedComm().shutdown();
    const auto rest = std::chrono::ceil<milliseconds>(end - platform::MonotonicClock::now());
    UserDefaults::standard().synchronize(std::max(rest, milliseconds(0)));
}
