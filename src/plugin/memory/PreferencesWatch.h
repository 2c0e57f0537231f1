#pragma once

#include "plugin/memory/Preferences.h"
#include "plugin/memory/PreferencesFile.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// Reads the preferences again whenever one of their files changes, is replaced, comes or goes. The
/// folders need not exist: the nearest one above that does is watched as long. A disk is only ever
/// waited for on a queue of its own, but for the first reading. The main thread only; readings come
/// by the main queue, which the thread's run loop should serve.
class PreferencesWatch {
  public:
    /// Begins to watch. `changed` is called with each reading that is not as the one before, but
    /// never from within a function of this class.
    PreferencesWatch(PreferencesFile file, std::function<void(const Preferences&)> changed);

    /// No call comes afterwards.
    ~PreferencesWatch();
    PreferencesWatch(const PreferencesWatch&) = delete;
    PreferencesWatch& operator=(const PreferencesWatch&) = delete;

    /// Waits for the first reading, of which `changed` will not be told. Nothing when there was
    /// none. To be called at once.
    std::optional<Preferences> first();

    /// Reads and watches `own` from now on in place of the user's own file.
    void follow(std::string own);

    /// Reads again, although nobody has seen a change.
    void readAgain();

  private:
    class Worker;

    const std::shared_ptr<Worker> worker_;
};
