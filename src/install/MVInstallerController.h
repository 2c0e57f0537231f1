#pragma once

#include "platform/authorization/PrivilegedTool.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

class HelperInstallation;

/// Keeps the plug-in that is installed for all users the same as the one in the application, and
/// removes it. What this user may not change is done by TNInstaller as administrator, see
/// docs/installing.md. While that asks and works, the windows paint but take no input, and the
/// sockets are served.
///
/// A failure to install ends the program after an alert. Main thread only.
class MVInstallerController {
  public:
    /// What tests replace.
    struct Dependencies {
        std::function<void()> terminate;
        std::function<int()> restart;
        std::function<bool(const std::string& path)> mayReplace;
        QString bundlePath;
        QString localLibraryPath;
        std::string pkexec;
        std::shared_ptr<HelperInstallation> helper = nullptr; ///< null: there is none to manage
    };

    /// Needs the application object.
    static MVInstallerController& sharedController();

    explicit MVInstallerController(Dependencies dependencies);

    /// The sources that are not installed, or not the same; nothing if there are none.
    [[nodiscard]] std::optional<QStringList> filesToInstall() const;

    /// Installs what filesToInstall() lists. False if that is nothing, or if it fails.
    [[nodiscard]] bool install();

    /// Says that the computer must be restarted, and does so if the user agrees.
    void runPostInstallAlert();

    /// Asks the user, and removes the plug-in and the application. Then, or if
    /// `terminateAfterwards` whatever the answer is, ends the program.
    void uninstall(bool terminateAfterwards);

    /// Sets what uninstall() calls when the files are gone, to remove what else has been set up.
    void onUninstalled(std::function<void()> handler) { uninstalled_ = std::move(handler); }

    /// Sets what is called when the tool, a program of that name, has died of a signal.
    void onToolDied(std::function<void(const QString& tool, int signal)> handler) {
        toolDied_ = std::move(handler);
    }

    /// Runs the tool in the mode "i" with sources, or "u" with paths to remove. True if it
    /// succeeds.
    bool runInstaller(const QString& mode, const QStringList& files);

    /// Ends this user's processes of that name, as platform::endProcesses() does. Serves events
    /// meanwhile.
    static void killProcess(const QString& name);

    /// Asks the system for a restart: 0 if the request has been sent, else an errno. A refusal that
    /// comes later is an alert.
    static int restartComputer();

    /// The helper in the menu bar: the check at launch; installing, launching and registering it,
    /// or removing it; removing it. See HelperInstallation.
    void adjustHelperIfNecessary();
    [[nodiscard]] bool hasHelper() const; ///< false: these calls do nothing
    void showHelperInMenuBar(bool isShown);
    void uninstallHelper();

    /// The helper's bundle in the application, and where it runs from.
    static QString helperSourceURL();
    static QString helperDestinationURL();

    static QString localLibraryPath();
    static QString installerPath();
    static QString pluginPath();

    /// Where the plug-in is installed, whether or not it is.
    static QString installedPluginPath();

    /// Whether the local library is that of the build, and not one that the environment names. Only
    /// then may anything else be set up for the user.
    static bool usesBuiltInLibrary();

  private:
    struct Outcome {
        platform::PrivilegedTool::Answer answer = platform::PrivilegedTool::Answer::failed;
        int status = 0;
        std::string reply;
    };

    QStringList argumentsFor(const QString& mode, const QStringList& files) const;
    Outcome runTool(const QStringList& arguments);
    void tellIfDied(int status) const;
    bool isRefused(const Outcome& outcome, bool isInstall);
    void explain(const QString& title, const QString& reason) const;
    bool judge(const std::string& reply, bool isInstall, const QStringList& items);
    void failAndQuit(const QString& title, const QString& text);
    void restart();
    std::optional<QString> owningPackage() const;
    QString pathInBundle(const char* path) const;

    const Dependencies dependencies_;
    const QStringList sourcePaths_; // each is installed at the same index of destPaths_
    const QStringList destPaths_;
    std::function<void()> uninstalled_ = [] {};
    std::function<void(const QString& tool, int signal)> toolDied_ = [](const auto&, int) {};
};
