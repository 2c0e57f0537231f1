#pragma once

#include "platform/desktop/LoginItems.h"

#include <QString>

#include <functional>
#include <optional>
#include <string>

/// Keeps the menu-bar helper as the preferences want it: its installed copy the same as the one in
/// the application, running once and registered as a login item; or none of that. Nothing is kept
/// in memory: files, processes and login items are read afresh by each call.
///
/// Failures are logged, and the application goes on without its helper. Ending a helper serves
/// events; calls that arrive meanwhile are made afterwards, the newest of them. Main thread only.
class HelperInstallation {
  public:
    /// Receives an empty text on success, else the reason.
    using Launched = std::function<void(const QString& error)>;

    struct Dependencies {
        QString source = {};      ///< the bundle in the application
        QString destination = {}; ///< where the helper runs from
        std::string identifier = "com.quarnel.TonvaleHelper";
        QString name = QStringLiteral("TonvaleHelper"); ///< of the process and the login item
        platform::LoginItems loginItems;
        std::function<bool()> isWanted = {}; ///< by the preferences
        std::function<void(const QString& process)> killProcess = {};
        std::function<void(const QString& program, Launched launched)> launch = {};
    };

    explicit HelperInstallation(Dependencies dependencies);

    /// The check at launch: reinstalls a helper that runs more than once or from elsewhere, and
    /// shows or removes it as the preferences want.
    void adjustHelperIfNecessary();

    void showHelperInMenuBar(bool isShown);

    /// Ends and deletes the helper, and removes its login item.
    void uninstallHelper();

  private:
    enum class Wish { adjust, show, hide };

    void fulfil(Wish wish);
    void adjust();
    void show();
    void install();
    void remove();
    void launch();
    void addLoginItem();
    bool isInstalled() const;

    Dependencies dependencies_;
    bool isBusy_ = false;
    std::optional<Wish> next_; // what was called for meanwhile
};
