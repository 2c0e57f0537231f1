#pragma once

#include "framework/installer/BundleSearch.h"

#include <QString>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// Copies the application from the read-only disk image that it was delivered on into the
/// Applications folder, then quits and starts the copy. Older copies go to the Trash; a newer one
/// is replaced only if the user wants it, whom even a silent installer asks.
///
///  1. appIsRunningFromReadOnlyDiskImage() says that this is due.
///  2. The properties say how.
///  3. installWithUpgradePath()
///
/// A failure is an alert, after which the program ends; what is installed stays as it was. Main
/// thread only.
class QNAppInstaller {
  public:
    /// What tests replace.
    struct Dependencies {
        std::filesystem::path bundle; ///< the running one
        std::function<void()> terminate;
        /// Whether the program has been told to end meanwhile.
        std::function<bool()> shouldExit;
        /// Starts a program on its own, as platform::startIndependently() does.
        std::function<int(const std::vector<std::string>& arguments)> start;
    };

    /// The running application.
    QNAppInstaller();
    explicit QNAppInstaller(Dependencies dependencies);

    /// The option by which a copy is told the volume that it comes from.
    static constexpr const char* installVolumeOption = "QNInstallVolume";

    /// Whether the user may not go on running from the disk. False by default, as the next.
    [[nodiscard]] bool requiredInstall() const noexcept { return requiredInstall_; }
    void setRequiredInstall(bool required) noexcept { requiredInstall_ = required; }

    /// Whether it copies without asking.
    [[nodiscard]] bool silentInstall() const noexcept { return silentInstall_; }
    void setSilentInstall(bool silent) noexcept { silentInstall_ = silent; }

    /// Whether the user's own Applications folder will do. True by default, as the next.
    [[nodiscard]] bool allowUserSpecificInstall() const noexcept { return allowUserSpecific_; }
    void setAllowUserSpecificInstall(bool allow) noexcept { allowUserSpecific_ = allow; }

    /// Whether the copy is told which volume it comes from, so that it can dispose of the image.
    [[nodiscard]] bool trashInstallImage() const noexcept { return trashInstallImage_; }
    void setTrashInstallImage(bool trash) noexcept { trashInstallImage_ = trash; }

    /// Replaces the usual text of the question; empty for the usual one.
    [[nodiscard]] const QString& promptMessage() const noexcept { return promptMessage_; }
    void setPromptMessage(const QString& message) { promptMessage_ = message; }

    /// Whether the volume that holds the running bundle is both mounted read-only and local.
    [[nodiscard]] static bool appIsRunningFromReadOnlyLocalVolume();

    /// Likewise, and whether it is a disk image. False for a bundle that a package has installed,
    /// which may well lie in one.
    [[nodiscard]] static bool appIsRunningFromReadOnlyDiskImage();

    /// Whether a bundle can be put at that path: it is not immutable, its folder can be written,
    /// and that is neither a trash folder nor a backup.
    [[nodiscard]] static bool isValidInstallPath(const std::filesystem::path& path);

    /// The Applications folder of all users if it can be written, else the user's own, which is
    /// made if it is missing. Empty if it cannot be made.
    [[nodiscard]] std::filesystem::path defaultInstallFolder() const;

    /// The best of findUpgradePath(): the newest copy in both Applications folders.
    [[nodiscard]] std::filesystem::path findUpgradePath() const;

    /// Asks unless silent, copies, and ends the program; `upgradePath` is an older copy to replace,
    /// or empty. Returns without a copy if the user wants to go on from the disk.
    void installWithUpgradePath(const std::filesystem::path& upgradePath);

    /// Ends the program and starts the application at `path` once it is gone.
    void quitSelfAndLaunchApp(const std::filesystem::path& path);

  private:
    enum class Choice { copy, goOn, leave };

    [[nodiscard]] QString name() const;
    [[nodiscard]] Choice ask(const std::filesystem::path& folder, bool isUpgrade) const;
    [[nodiscard]] std::filesystem::path newerCopy(const std::filesystem::path& destination,
                                                  const std::filesystem::path& upgradePath) const;
    [[nodiscard]] bool mayReplace(const std::filesystem::path& newer) const;
    void copyTo(const std::filesystem::path& destination,
                const std::vector<std::filesystem::path>& older);
    void fail(const QString& reason);
    void quitAndLaunch(const std::filesystem::path& path, const std::string& volume);

    const Dependencies dependencies_;
    const BundleFacts facts_; // of the running bundle
    bool requiredInstall_ = false;
    bool silentInstall_ = false;
    bool allowUserSpecific_ = true;
    bool trashInstallImage_ = true;
    QString promptMessage_;
};
