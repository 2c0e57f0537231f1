#pragma once

#include "look/window/QNAboutController.h"

#include <QString>

#include <memory>

class AppVolumeController;
class MenuBarHelper;
class QNLogTableViewer;
class QNPreferencesItemViewController;
class QNPreferencesWindowController;
class VolumeWindow;
class qnlog_handle;

/// The windows beside the volume window. Each is made when it is first shown, and kept; there is
/// one of each. Main thread only.
class ApplicationWindows {
  public:
    /// All of them must outlive the object; `helper` may be null. `logFile` lies beside all log
    /// files. The entries of the window's menu for the ignore list and for support reports are
    /// handled from now on.
    ApplicationWindows(VolumeWindow& window, AppVolumeController& controller, MenuBarHelper* helper,
                       const QString& logFile);
    ~ApplicationWindows();
    ApplicationWindows(const ApplicationWindows&) = delete;
    ApplicationWindows& operator=(const ApplicationWindows&) = delete;

    void showPreferences();

    void showAbout() { about_.showWindow(); }

    /// The log behind the handle; null: that of this run is missing.
    void showLog(qnlog_handle* handle);

    /// Opens the page to recommend the program with, in the user's browser.
    static void recommend();

  private:
    void makePreferences();
    void showIgnoredPrograms();

    VolumeWindow& window_;
    AppVolumeController& controller_;
    MenuBarHelper* const helper_;
    QNAboutController about_;
    std::unique_ptr<QNPreferencesWindowController> preferences_;
    std::shared_ptr<QNPreferencesItemViewController> ignoredPane_;
    std::unique_ptr<QNLogTableViewer> log_;
};
