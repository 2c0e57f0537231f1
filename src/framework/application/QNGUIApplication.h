#pragma once

#include "framework/application/PlatformApplication.h"
#include "framework/application/QNApplication.h"

#include "platform/window/Alert.h"

#include <QColor>

class QWidget;

/// The application object of a program with windows. Its main() runs the toolkit's loop; alerts are
/// shown on the main window if possible. Main thread only.
class QNGUIApplication : public QNApplication {
    Q_OBJECT

  public:
    /// Creates the program's windows, and the delegate that is called around launch and end.
    static void setMainInterface(PlatformApplication::Interface interface);

    int main(int argc, char** argv) override;

    /// Asks the toolkit's event loop to end. Then the delegate's applicationWillTerminate() is
    /// called, and the program ends with status 0.
    void terminate() override;

    /// Handles all of the toolkit's events on the main thread.
    void waitInEventLoopFor(double seconds) override;

    /// Called when the interface has been created, before the launch.
    virtual void awakeFromNib() {}

    /// Called when the session is about to end, which may still be called off: save what is not
    /// saved yet, and ask nothing.
    virtual void applicationShouldSave() {}

    /// The window that has the keyboard, else the first that is visible; null when there is none.
    QWidget* mainWindow() const;

    /// Shows an alert, waits, and returns the button.
    platform::Alert::Button alertWithTitle(const QString& title, const QString& message,
                                           const QString& defaultButton,
                                           const QString& alternateButton,
                                           const QString& otherButton);
    platform::Alert::Button criticalAlertWithTitle(const QString& title, const QString& message,
                                                   const QString& defaultButton,
                                                   const QString& alternateButton,
                                                   const QString& otherButton);

    /// Shows an alert as a sheet on the main window and returns, or waits if there is no such
    /// window or it has a sheet already. Use a warning for a failure, a critical alert if the
    /// user's action cannot go on.
    void alertWithTitle(const QString& title, const QString& message, const QString& defaultButton);
    void warningAlertWithTitle(const QString& title, const QString& message,
                               const QString& defaultButton);
    void criticalAlertWithTitle(const QString& title, const QString& message,
                                const QString& defaultButton);

    QColor errorTextColor() const { return {220, 0, 0}; }
    QColor warningTextColor() const { return {255, 180, 20}; }
    QColor successTextColor() const { return {0, 150, 0}; }

    /// The content types of all document types that the bundle's information lists.
    QStringList documentIdentifiers() const;

    bool machineHasAutoSwitchingGPUs() const;
    bool machineAutoGPUSwitchingEnabled() const { return machineHasAutoSwitchingGPUs(); }

    /// The first part of a model's number, whose digits are taken together: 6 of "Model6,2"; since
    /// more than two digits are cut by two, 1 of "Model10,1".
    static int majorModelNumber(const QString& modelName);

  private:
    friend class PlatformApplication;
};
