#pragma once

#include "platform/bus/UserService.h"

#include <QString>

#include <functional>

namespace platform {
class UserDefaults;
}

/// Keeps the plug-in that is installed for all users running in this session and in later ones: as
/// a service where this user has a systemd manager, else as a login item and a program of its own.
/// Both are set up once only, so that they stay switched off if the user switches them off; a
/// service that somebody else has set up is left as it is. A service whose file was replaced is
/// read again. Main thread only.
class InstalledPlugin {
  public:
    using Answer = std::function<void(const QString& error)>;

    /// Its access to the system; tests replace it. Answers come later, with an error or an empty
    /// text.
    struct SystemCalls {
        std::function<void(std::function<void(const platform::UserService::State&)> answer)>
            askService;
        std::function<void(const QString& unitFile, Answer answer)> enableService;
        std::function<void(Answer answer)> reloadServices;
        std::function<void(Answer answer)> removeService;
        std::function<bool(bool exists)> setLoginItem; ///< false if that failed
        std::function<bool()> isInstalled;
        std::function<bool()> isRunning;
        std::function<void()> end;   ///< returns when it does not run any more
        std::function<void()> start; ///< as PluginStarter does
    };

    /// `bundle` is the installed bundle of the plug-in; `defaults` must outlive this.
    InstalledPlugin(SystemCalls system, QString bundle, platform::UserDefaults& defaults);

    /// Starts it if it does not run, or, if it has been replaced, anew. Neither a masked service
    /// nor a plug-in that is not installed is started.
    void run(bool isReplaced);

    /// Ends it, and removes what run() has set up. Serves events until that is done.
    void remove();

  private:
    void runAsService(const platform::UserService::State& state);
    void runAsLoginItem();
    void startUnlessItRuns();
    void startAfter(const char* attempt, const QString& error);

    const SystemCalls system_;
    const QString bundle_;
    platform::UserDefaults& defaults_;
};
