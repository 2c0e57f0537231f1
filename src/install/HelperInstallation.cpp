#include "install/HelperInstallation.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "install/HelperCopy.h"
#include "install/RunningHelpers.h"
#include "platform/bundle/Bundle.h"
#include "platform/files/DirectoryComparison.h"

#include <QScopeGuard>

#include <filesystem>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

HelperInstallation::HelperInstallation(Dependencies dependencies)
    : dependencies_(std::move(dependencies)) {}

void HelperInstallation::adjustHelperIfNecessary() {
    fulfil(Wish::adjust);
}

void HelperInstallation::showHelperInMenuBar(bool isShown) {
    fulfil(isShown ? Wish::show : Wish::hide);
}

void HelperInstallation::uninstallHelper() {
    fulfil(Wish::hide);
}

void HelperInstallation::fulfil(Wish wish) {
    next_ = wish;
    if (isBusy_)
        return;
    isBusy_ = true;
    const auto over = qScopeGuard([this] { isBusy_ = false; });
    while (const auto current = std::exchange(next_, std::nullopt)) {
        if (*current == Wish::adjust)
            adjust();
        else if (*current == Wish::show)
            show();
        else
            remove();
    }
}

void HelperInstallation::adjust() {
    if (!dependencies_.isWanted()) {
        remove();
        return;
    }
    const fs::path destination = dependencies_.destination.toStdString();
    const auto helpers = runningHelpers(dependencies_.identifier, destination.filename());
    std::error_code error;
    if (helpers.size() > 1) {
        QNLog(qnlog_warning,
              "Multiple instances of helper found. Terminating all and reinstalling.");
        remove();
    } else if (helpers.size() == 1 &&
               (!helpers[0].isCurrent ||
                helpers[0].bundle != fs::weakly_canonical(destination, error))) {
        QNLog(qnlog_warning, "Helper app doesn't match. Reinstalling.");
        remove();
    }
    show();
}

void HelperInstallation::show() {
    if (!isInstalled()) {
        QNLog(qnlog_information, "Helper not found. Installing.");
        install();
    } else if (!platform::isDirectoryEqualToDirectory(dependencies_.source.toStdString(),
                                                      dependencies_.destination.toStdString())) {
        QNLog(qnlog_information, "Existing helper doesn't match. Installing.");
        install();
    }
    launch();
    addLoginItem();
}

void HelperInstallation::install() {
    remove();
    const QString error = copyHelper(dependencies_.source, dependencies_.destination);
    if (!error.isEmpty())
        QNLog(qnlog_error, "Failed to copy helper: %@", error);
}

void HelperInstallation::launch() {
    const fs::path contents = fs::path(dependencies_.destination.toStdString()) / "Contents";
    std::error_code error;
    std::string program = dependencies_.name.toStdString();
    if (fs::exists(contents / "Info.plist", error))
        program = platform::Bundle(contents).text("CFBundleExecutable");
    dependencies_.launch(QString::fromStdString(contents / "Linux" / program),
                         [](const QString& reason) {
                             if (!reason.isEmpty())
                                 QNLog(qnlog_error, "Failed to launch helper: %@", reason);
                         });
}

/// One that belongs to an application elsewhere would never start once that is gone.
void HelperInstallation::addLoginItem() {
    auto& items = dependencies_.loginItems;
    std::optional<platform::LoginItem> item;
    const bool isThere =
        items.loginItemExists(dependencies_.name, {}, &item) && !items.isOutdated(*item);
    if (!isThere && !items.addToLoginItems(dependencies_.destination))
        QNLog(qnlog_error, "Couldn't add %@ to login items", dependencies_.name);
}

void HelperInstallation::remove() {
    dependencies_.killProcess(dependencies_.name);
    std::error_code error;
    if (isInstalled()) {
        fs::remove_all(dependencies_.destination.toStdString(), error);
        if (error)
            QNLog(qnlog_error, "Failed to remove helper: %@", error.message());
    }
    auto& items = dependencies_.loginItems;
    if (items.loginItemExists(dependencies_.name, {}) &&
        !items.removeFromLoginItems({}, dependencies_.name))
        QNLog(qnlog_error, "Couldn't remove %@ from login items", dependencies_.name);
}

/// A link that leads nowhere is in the way too.
bool HelperInstallation::isInstalled() const {
    std::error_code error;
    return fs::symlink_status(dependencies_.destination.toStdString(), error).type() !=
           fs::file_type::not_found;
}
