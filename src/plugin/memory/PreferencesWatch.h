#pragma once

#include "plugin/memory/Preferences.h"
#include "plugin/memory/PreferencesFile.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// Reads the preferences again whenever one of their files is changed, replaced, created or
/// removed. The folders need not exist: the nearest existing parent is watched then. Reads on its
/// own queue, except for the first reading. Main thread only; readings arrive through the main
/// queue, which the thread's run loop should serve.
class PreferencesWatch {
  public:
    /// Starts to watch. `changed` is called with each reading that differs from the previous one,
    /// but never from within a function of this class.
    PreferencesWatch(PreferencesFile file, std::function<void(const Preferences&)> changed);

    /// No call comes afterwards.
    ~PreferencesWatch();
    PreferencesWatch(const PreferencesWatch&) = delete;
    PreferencesWatch& operator=(const PreferencesWatch&) = delete;

    /// Waits for the first reading, for which `changed` is not called. Nothing if it failed. Call
    /// it right after construction.
    [[nodiscard]] std::optional<Preferences> first();

    /// Reads and watches `own` from now on as the user's own file.
    void follow(std::string own);

    /// Reads again, even without a detected change.
    void readAgain();

  private:
    class Worker;

    const std::shared_ptr<Worker> worker_;
};
