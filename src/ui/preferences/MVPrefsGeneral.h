#pragma once

#include "framework/preferences/QNPreferencesItemViewController.h"
#include "platform/defaults/UserDefaults.h"

#include <QPointer>

class IconView;
class MenuBarHelper;
class NewProgramsVolume;
class QAbstractButton;
class QCheckBox;
class QLabel;
class RememberedApps;

/// The General pane: the icon in the menu bar, the sample sound, contrast, the volume of new
/// programs, and the reports of crashes. Every control shows what is stored and follows changes
/// made elsewhere; what the user sets is stored at once. Main thread only.
class MVPrefsGeneral final : public QNPreferencesItemViewController {
    Q_OBJECT

  public:
    struct Dependencies {
        platform::UserDefaults& defaults;
        RememberedApps& apps;            ///< that keeps its settings in `defaults`
        MenuBarHelper* helper = nullptr; ///< null: there is none
    };

    /// All of them must outlive the pane.
    explicit MVPrefsGeneral(const Dependencies& dependencies);
    ~MVPrefsGeneral() override;

    QString label() const override;
    QIcon icon() const override;
    QString identifier() const override { return QStringLiteral("General"); }
    void windowWillClose() override;

  private:
    std::unique_ptr<QWidget> loadView() override;
    QWidget* makeMenuBarRows();
    QWidget* makeIconChoice();
    QWidget* makeCrashRows();
    void show();
    void showHelper();
    bool store(const QString& key, bool value);

    const Dependencies dependencies_;
    QPointer<QCheckBox> showInMenuBar_; // this and the others null while there is no view
    QPointer<QLabel> helperState_;
    QPointer<QWidget> iconChoice_;
    QPointer<QAbstractButton> color_;
    QPointer<QAbstractButton> grayscale_;
    QPointer<IconView> colorImage_;
    QPointer<IconView> grayImage_;
    QPointer<QCheckBox> playSample_;
    QPointer<QCheckBox> moreContrast_;
    QPointer<NewProgramsVolume> newPrograms_;
    QPointer<QCheckBox> writeCrashReports_;
    QPointer<QCheckBox> offerCrashReports_;
    std::vector<platform::DefaultsObservation> observations_;
};
