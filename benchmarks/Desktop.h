#pragma once

#include "WindowProbe.h"

#include "platform/base/MonotonicClock.h"
#include "support/ChildProcess.h"
#include "support/NamedCopy.h"
#include "support/PrivateAudioSession.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/VirtualDisplay.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// The home of one program: no other reads its settings, and what it caches lasts for a figure.
class Home {
  public:
    Home();

    support::ChildProcess::Options options() const { return {.environment = environment_}; }
    std::filesystem::path log() const { return folder_.path() / "state/Tonvale/Tonvale.log"; }
    std::filesystem::path socket() const;

  private:
    const support::PrivateFolder folder_;
    std::vector<std::pair<std::string, std::string>> environment_;
};

/// A display without a window manager, a session bus and an audio server on which programs play.
/// One at a time.
class Desktop {
  public:
    /// Waits until all of `players`, command lines that PulseAudio's service lists as one stream
    /// each, play. Each begins with the path of a program, and each is a program of its own. `size`
    /// is the display's: "WIDTHxHEIGHT".
    Desktop(const std::string& size, const std::vector<std::vector<std::string>>& players);
    ~Desktop() { current_ = nullptr; }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    static Desktop& current() { return *current_; }

    WindowProbe& probe() { return probe_; }
    Home& homeOf(const std::string& program) { return homes_[program]; }
    std::size_t programs() const { return players_.size(); }

    /// What the services of sound and the display have spent together.
    platform::MonotonicClock::duration timeOfServices();

  private:
    /// These would have programs use another session or look different.
    const support::ScopedVariable unset_[8] = {
        {"WAYLAND_DISPLAY", {}},      {"PULSE_SERVER", {}},     {"PULSE_SINK", {}},
        {"PIPEWIRE_REMOTE", {}},      {"GTK_THEME", {}},        {"GTK_MODULES", {}},
        {"QT_QPA_PLATFORMTHEME", {}}, {"QT_STYLE_OVERRIDE", {}}};
    const support::VirtualDisplay display_;
    support::PrivateAudioSession audio_;
    std::vector<std::unique_ptr<support::NamedCopy>> copies_; // each name is a program
    std::vector<std::unique_ptr<support::ChildProcess>> players_;
    WindowProbe probe_;
    std::map<std::string, Home> homes_;

    static inline Desktop* current_ = nullptr;
};

} // namespace bench
