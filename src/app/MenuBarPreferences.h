#pragma once

#include "platform/defaults/UserDefaults.h"

#include <QObject>
#include <QString>

#include <functional>

/// The two preferences of the menu bar: shows or hides the helper, and tells it which icon is
/// wanted, as soon as they change. Main thread only.
class MenuBarPreferences final : public QObject {
    Q_OBJECT

  public:
    struct Dependencies {
        platform::UserDefaults& defaults;
        QString iconFile; ///< which the helper reads
        std::function<void(bool isShown)> showHelper;
        std::function<void(const QString& notification)> post; ///< to the helper
    };

    /// The dependencies of the process, but for `showHelper`.
    static Dependencies sharedDependencies();

    /// Observes the preferences from now on.
    explicit MenuBarPreferences(Dependencies dependencies);

    /// Writes the helper's file: "1" for the coloured icon, else "0". A failure is logged.
    static void updateTNHelperPref(const Dependencies& dependencies);

    /// Removes that file, and its folder if nothing else is in it.
    static void removeTNHelperPref(const Dependencies& dependencies);

  private:
    void showInMenuBarChanged();
    void useColorIconChanged();

    const Dependencies dependencies_;
    const platform::DefaultsObservation shownObservation_;
    const platform::DefaultsObservation colorObservation_;
};
