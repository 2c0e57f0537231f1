#include "plugin/programs/StreamRules.h"

#include "platform/sound/SampleOutput.h"

#include <algorithm>
#include <array>

namespace {

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

bool StreamRules::isNotification(std::string_view announced, std::string_view own) {
    constexpr std::array<std::string_view, 2> roles{"notification", "event"};
    const std::string_view role = announced.empty() ? own : announced;
    return std::ranges::any_of(roles, [role](std::string_view each) {
        return std::ranges::equal(role, each, {}, lowered);
    });
}

bool StreamRules::mayBeSampleSound(std::string_view clientName, const ProgramProcess& process) {
    return clientName == platform::SampleOutput::clientName &&
           process.proof == StreamProcess::Proof::peer;
}

StreamKind StreamRules::kindOf(bool isNotification, const std::optional<StreamPlayer>& player) {
    return isNotification                 ? StreamKind::notification
           : player && player->showsPages ? StreamKind::page
                                          : StreamKind::player;
}

WantedVolume StreamRules::followingChange(const WantedVolume& change,
                                          const std::optional<StreamPlayer>& changed,
                                          const std::optional<StreamPlayer>& other) {
    if (!changed || !other || other->process.isSameProcess(changed->process))
        return {};
    WantedVolume following = change;
    if (following.gain)
        following.gain = std::min(*following.gain, *kFullVolume.gain);
    return following;
}

WantedVolume StreamRules::lastingPart(const WantedVolume& found,
                                      const std::optional<StreamPlayer>& player) {
    return player && player->showsPages ? WantedVolume{} : found;
}
