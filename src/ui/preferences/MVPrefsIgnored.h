#pragma once

#include "framework/preferences/QNPreferencesItemViewController.h"
#include "look/window/BarButton.h"
#include "platform/bus/NotificationCenter.h"
#include "ui/preferences/AddIgnoredAppSheet.h"
#include "ui/preferences/BuiltInIgnoredModel.h"
#include "ui/preferences/CustomIgnoredModel.h"
#include "ui/preferences/FilteredTable.h"
#include "ui/preferences/KnownPrograms.h"

#include <QHash>
#include <QPointer>

#include <functional>

class IgnoredAppsTable;
class MVIgnoredApps;
class Workspace;

/// The Ignore List pane: the built-in entries, which can be switched off, and the user's own names,
/// which can be added in a sheet and removed. What the user does is done at once, and changes made
/// elsewhere are followed. Main thread only.
class MVPrefsIgnored final : public QNPreferencesItemViewController {
    Q_OBJECT

  public:
    struct Dependencies {
        MVIgnoredApps& ignoredApps;
        const Workspace& workspace;
        std::function<QList<KnownProgram>()> knownPrograms; ///< that the sheet completes
    };

    /// All of them must outlive the pane.
    explicit MVPrefsIgnored(Dependencies dependencies);
    ~MVPrefsIgnored() override;

    QString label() const override;
    QIcon icon() const override;
    QString identifier() const override { return QStringLiteral("Ignore List"); }
    void windowWillClose() override;

    /// Opens the sheet on the pane's window.
    void addIgnoredApp();

    /// Removes the selected names, from the highest row down.
    void removeIgnoredApp();

    /// Ends the sheet. With the tag of its confirming button, the name is added: the process name
    /// of a displayed name that it has completed, else what has been typed.
    void addAction(int tag);

    /// The icon of the application of that name, whatever its case, else the generic one.
    QIcon imageForAppName(const QString& name);

    // The parts of the view; null before it is loaded.
    IgnoredAppsTable* builtInTableView() const;
    IgnoredAppsTable* customTableView() const;
    BarButton* addProgramButton() const noexcept { return addProgramButton_; }
    BarButton* removeButton() const noexcept { return removeButton_; }
    AddIgnoredAppSheet* addSheet() const noexcept { return addSheet_; }

  private:
    std::unique_ptr<QWidget> loadView() override;
    QWidget* makeButtons();
    void ignoredAppsDidChange();
    void iconsDidChange();
    void updateRemoveButton();
    QString processNameFor(const QString& typed) const;
    QString warningFor(const QString& typed) const;

    const Dependencies dependencies_;
    QHash<QString, QIcon> icons_; // by names in lower case
    BuiltInIgnoredModel builtIn_;
    CustomIgnoredModel custom_;
    QPointer<FilteredTable> builtInTable_;
    QPointer<FilteredTable> customTable_;
    QPointer<BarButton> addProgramButton_;
    QPointer<BarButton> removeButton_;
    QPointer<AddIgnoredAppSheet> addSheet_;
    QList<KnownProgram> completed_; // by the sheet
    const platform::NotificationObserver ignoredObserver_;
    const platform::NotificationObserver workspaceObserver_;
};
