#include "helper/Helper.h"

#include "helper/InstalledApplication.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/DesktopNotice.h"
#include "platform/bus/SingleInstance.h"
#include "platform/language/PlainTexts.h"

#include <QCoreApplication>

#include <utility>

namespace {

using Kind = MenuCommand::Kind;

constexpr const char* updateIcon = "com.quarnel.Tonvale.HelperUpdateMenuBarIcon";

QString text(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

Helper::Surroundings Helper::usualSurroundings() {
    return {.volumeTool = QStringLiteral("/usr/bin/wpctl"),
            .iconPreference = MenuBarIcon::preferenceFile(),
            .findApplication = &InstalledApplication::program,
            .quit = [] { QCoreApplication::quit(); }};
}

Helper::Helper(const QDBusConnection& bus, platform::SingleInstance& instance,
               Surroundings surroundings)
    : surroundings_(std::move(surroundings))
    , bus_(bus)
    , instance_(instance)
    , launcher_(bus)
    , object_(bus)
    , icon_(surroundings_.iconPreference)
    , output_(surroundings_.volumeTool)
    , item_(itemActions(), MenuBarIcon::themePath(), DBusMenu::path())
    , busMenu_({.chosen = [this](const MenuCommand& command) { obey(command); },
                .opening = [this] { output_.refresh(); }})
    , application_(bus, [this] { showing_.start(); })
    , registration_(bus, [this] { object_.setShown(registration_.isShown()); })
    , iconChanges_(QLatin1String(updateIcon), [this] {
        if (icon_.reload())
            updateLook();
    }) {
    registerTrayTypes();
    showing_.setSingleShot(true);
    showing_.setInterval(0);
    QObject::connect(&showing_, &QTimer::timeout, &showing_, [this] { showState(); });
    QObject::connect(&output_, &OutputVolume::changed, &showing_, qOverload<>(&QTimer::start));
    showState();
    bus_.registerObject(StatusNotifierItem::path(), &item_,
                        QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots |
                            QDBusConnection::ExportAllSignals);
    bus_.registerObject(DBusMenu::path(), &busMenu_,
                        QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots |
                            QDBusConnection::ExportAllSignals);
    instance_.serve(&object_);
    output_.refresh();
}

Helper::~Helper() {
    instance_.serve(nullptr);
    bus_.unregisterObject(StatusNotifierItem::path());
    bus_.unregisterObject(DBusMenu::path());
}

StatusNotifierItem::Actions Helper::itemActions() {
    return {.activated = [this](const QString& token) { open(token, true); },
            .secondaryActivated = [this] { output_.toggleMute(); },
            .scrolled = [this](int delta) { turn(delta); },
            .menuWanted = [this] { output_.refresh(); }};
}

void Helper::showState() {
    updateLook();
    busMenu_.setTree(menu_.compose(output_.state(), application_.programs()));
}

/// Not every host shows tool tips, so the title tells the state too.
void Helper::updateLook() {
    const auto& state = output_.state();
    QString title = QStringLiteral("Tonvale");
    if (const QString volume = TrayMenu::describe(state); !volume.isEmpty())
        title += QLatin1String(": ") + volume;
    item_.setLook({.title = title,
                   .text = application_.isRunning()
                               ? QString()
                               : text(PlainTexts::tr("Tonvale is not running")),
                   .icon = icon_.name(state && state->muted)});
}

void Helper::open(const QString& token, bool mayHide) {
    if (application_.isRunning()) {
        if (mayHide)
            application_.toggleWindow(token);
        else
            application_.showWindow(token);
    } else if (const auto program = surroundings_.findApplication()) {
        start(*program, token);
    } else {
        tellGone();
    }
}

/// The start takes the token.
void Helper::openPreferences(const QString& token) {
    if (application_.isRunning()) {
        application_.showPreferences(token);
    } else {
        application_.showPreferences({});
        open(token, false);
    }
}

void Helper::start(const std::filesystem::path& program, const QString& token) {
    QStringList variables;
    if (!token.isEmpty())
        variables = {QLatin1String("XDG_ACTIVATION_TOKEN=") + token,
                     QLatin1String("DESKTOP_STARTUP_ID=") + token};
    launcher_.launch({.name = QStringLiteral("com.quarnel.Tonvale"),
                      .program = QString::fromStdString(program),
                      .variables = variables},
                     [this](const QString& error) {
                         if (error.isEmpty())
                             return;
                         application_.forgetPreferences();
                         platform::systemLog(platform::LogPriority::error,
                                             "Couldn't start Tonvale: %s", qUtf8Printable(error));
                         platform::postDesktopNotice(
                             bus_, text(PlainTexts::tr("Tonvale can't be started")), error);
                     });
}

/// Without the application there is nothing left to do here.
void Helper::tellGone() {
    platform::systemLog(platform::LogPriority::warning,
                        "The application is not there any more; ending");
    platform::postDesktopNotice(bus_, text(PlainTexts::tr("Tonvale is not installed any more")),
                                text(PlainTexts::tr("Its icon goes too.")));
    surroundings_.quit();
}

void Helper::turn(int delta) {
    const auto dialect = scrollDialectOf(registration_.watcherProcess().toStdString());
    if (const int notches = notches_.turned(delta, dialect); notches != 0)
        output_.step(notches);
}

void Helper::obey(const MenuCommand& command) {
    switch (command.kind) {
    case Kind::none:
        return;
    case Kind::toggleOutputMute:
        output_.toggleMute();
        return;
    case Kind::toggleProgramMute:
        toggleMute(command.program);
        return;
    case Kind::setProgramVolume:
        application_.setVolume(command.program, command.percent);
        return;
    case Kind::muteAll:
        application_.muteAll();
        return;
    case Kind::openWindow:
        open(item_.takeToken(), false);
        return;
    case Kind::preferences:
        openPreferences(item_.takeToken());
        return;
    case Kind::quit:
        application_.quit();
        surroundings_.quit();
        return;
    }
}

void Helper::toggleMute(const QString& program) {
    for (const PlayingProgram& each :
         application_.programs().value_or(std::vector<PlayingProgram>())) {
        if (each.path == program)
            application_.setMuted(program, !each.muted);
    }
}
