#include "Harness.h"

#include "framework/preferences/QNPreferencesWindowController.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "settings/PreferenceKeys.h"
#include "support/VolumeModel.h"
#include "ui/preferences/IgnoredAppsTable.h"
#include "ui/preferences/MVPrefsGeneral.h"
#include "ui/preferences/MVPrefsIgnored.h"
#include "workspace/DesktopWorkspace.h"

#include <QCoreApplication>
#include <QEvent>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>

// The preferences window with a long ignore list, drawn by software into memory. The icons are the
// desktop's.
namespace {

using Clock = std::chrono::steady_clock;

constexpr int customNames = 5000;

/// Notes whether a widget has been drawn.
class Drawing final : public QObject {
  public:
    explicit Drawing(QWidget& widget) { widget.installEventFilter(this); }
    bool isDone() const noexcept { return isDone_; }

  private:
    bool eventFilter(QObject* /*widget*/, QEvent* event) override {
        isDone_ = isDone_ || event->type() == QEvent::Paint;
        return false;
    }
    bool isDone_ = false;
};

class Preferences {
  public:
    Preferences() {
        QStringList names;
        for (int i = 0; i < customNames; ++i)
            names += QStringLiteral("Program %1").arg(i, 4, 10, QLatin1Char('0'));
        model_.defaults.set(PreferenceKeys::customIgnoredApps, names);
        ignored_.emplace(model_.defaults);
    }

    /// Milliseconds from the command until the window, with the list, has been drawn.
    double open() {
        const auto begin = Clock::now();
        if (window_ == nullptr)
            make();
        window_->showWindow();
        const Drawing drawing(*pane_->customTableView()->viewport());
        while (!drawing.isDone()) {
            if (Clock::now() - begin > std::chrono::seconds(10))
                throw std::runtime_error("the list is not drawn");
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
        const auto time = Clock::now() - begin;
        if (pane_->customTableView()->model()->rowCount() != customNames)
            throw std::runtime_error("not every name is listed");
        return std::chrono::duration<double, std::milli>(time).count();
    }

    void close() { window_->window().close(); }

  private:
    void make() {
        window_ = std::make_unique<QNPreferencesWindowController>(QStringLiteral("Prefs"), 0,
                                                                  model_.defaults);
        window_->addController(QNPreferencesItemViewController::controller<MVPrefsGeneral>(
            MVPrefsGeneral::Dependencies{model_.defaults, model_.controller.rememberedApps()}));
        pane_ = QNPreferencesItemViewController::controller<MVPrefsIgnored>(
            MVPrefsIgnored::Dependencies{*ignored_, workspace_, {}});
        window_->addController(pane_);
        window_->selectController(pane_);
    }

    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    DesktopWorkspace workspace_{loop_, ApplicationScan::live(),
                                QDBusConnection(QStringLiteral("no such bus"))};
    support::VolumeModel model_;
    std::optional<MVIgnoredApps> ignored_; // the model's own was there before the names
    std::unique_ptr<QNPreferencesWindowController> window_;
    std::shared_ptr<MVPrefsIgnored> pane_;
};

double openFirst() {
    return Preferences().open();
}

double openSecond() {
    Preferences preferences;
    preferences.open();
    preferences.close();
    return preferences.open();
}

bool add(const std::string& name, const std::string& metric, double (*work)()) {
    return bench::addFigure(
        {.name = name, .metric = metric, .unit = "ms", .ours = work, .peerName = {}, .peer = {}});
}

[[maybe_unused]] const bool added[] = {
    add("prefs/open/first", "from the command to the window with 5,000 ignored names", &openFirst),
    add("prefs/open/second", "the same again, after it was closed", &openSecond),
};

} // namespace
