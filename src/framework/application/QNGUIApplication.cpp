#include "framework/application/QNGUIApplication.h"

#include "framework/application/ApplicationClasses.h"

#include "platform/bundle/Bundle.h"
#include "platform/defaults/PropertyList.h"
#include "platform/loop/DispatchQueue.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <unistd.h>

using platform::Alert;

namespace {

constexpr const char* menuBarClass = "QNMenuBarApplication";

PlatformApplication::Interface& mainInterface() {
    static PlatformApplication::Interface interface;
    return interface;
}

/// The message goes through a format, so that no percent sign in it means anything.
Alert makeAlert(Alert::Kind kind, const QString& title, const QString& message,
                const QString& defaultButton, const QString& alternateButton = {},
                const QString& otherButton = {}) {
    return {.kind = kind,
            .title = title,
            .message = platform::formatted(QStringLiteral("%@"), message),
            .defaultButton = defaultButton,
            .alternateButton = alternateButton,
            .otherButton = otherButton};
}

bool takesSheet(const QWidget* window) {
    if (!window)
        return false;
    const auto windows = QApplication::topLevelWidgets();
    return std::none_of(windows.begin(), windows.end(), [window](const QWidget* each) {
        return each->isVisible() && each->isWindow() && each->parentWidget() == window;
    });
}

void show(const Alert& alert, QWidget* window) {
    if (takesSheet(window))
        alert.showOn(*window);
    else
        alert.run();
}

QVariantMap bundleInformation() {
    QFile file(QString::fromStdString(platform::Bundle::main().contents() / "Info.plist"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return platform::parsePropertyList(file.readAll()).value_or(QVariant()).toMap();
}

} // namespace

void QNGUIApplication::setMainInterface(PlatformApplication::Interface interface) {
    mainInterface() = std::move(interface);
}

int QNGUIApplication::main(int argc, char** argv) {
    if (ApplicationClasses::find(menuBarClass) && inherits(menuBarClass))
        return QNApplication::main(argc, argv);
    parseOptions();
    return PlatformApplication::main(argc, argv, mainInterface());
}

void QNGUIApplication::terminate() {
    const auto quit = [this] {
        setShouldExit();
        QCoreApplication::quit();
    };
    if (::gettid() == ::getpid())
        quit();
    else
        platform::DispatchQueue::main()->async(quit);
}

void QNGUIApplication::waitInEventLoopFor(double seconds) {
    if (::gettid() != ::getpid() || !QCoreApplication::instance()) {
        QNApplication::waitInEventLoopFor(seconds);
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(std::chrono::round<std::chrono::milliseconds>(
                           std::chrono::duration<double>(std::max(seconds, 0.0))),
                       Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

QWidget* QNGUIApplication::mainWindow() const {
    if (QWidget* const active = QApplication::activeWindow())
        return active;
    const auto windows = QApplication::topLevelWidgets();
    const auto visible = std::find_if(windows.begin(), windows.end(), [](const QWidget* each) {
        return each->isVisible() && each->windowType() == Qt::Window;
    });
    return visible == windows.end() ? nullptr : *visible;
}

Alert::Button QNGUIApplication::alertWithTitle(const QString& title, const QString& message,
                                               const QString& defaultButton,
                                               const QString& alternateButton,
                                               const QString& otherButton) {
    return makeAlert(Alert::Kind::plain, title, message, defaultButton, alternateButton,
                     otherButton)
        .run();
}

Alert::Button QNGUIApplication::criticalAlertWithTitle(const QString& title, const QString& message,
                                                       const QString& defaultButton,
                                                       const QString& alternateButton,
                                                       const QString& otherButton) {
    return makeAlert(Alert::Kind::critical, title, message, defaultButton, alternateButton,
                     otherButton)
        .run();
}

void QNGUIApplication::alertWithTitle(const QString& title, const QString& message,
                                      const QString& defaultButton) {
    show(makeAlert(Alert::Kind::plain, title, message, defaultButton), mainWindow());
}

void QNGUIApplication::warningAlertWithTitle(const QString& title, const QString& message,
                                             const QString& defaultButton) {
    show(makeAlert(Alert::Kind::warning, title, message, defaultButton), mainWindow());
}

void QNGUIApplication::criticalAlertWithTitle(const QString& title, const QString& message,
                                              const QString& defaultButton) {
    show(makeAlert(Alert::Kind::critical, title, message, defaultButton), mainWindow());
}

QStringList QNGUIApplication::documentIdentifiers() const {
    static const QStringList identifiers = [] {
        QStringList found;
        const auto types = bundleInformation().value(QStringLiteral("CFBundleDocumentTypes"));
        for (const QVariant& type : types.toList())
            found += type.toMap().value(QStringLiteral("LSItemContentTypes")).toStringList();
        return found;
    }();
    return identifiers;
}

int QNGUIApplication::majorModelNumber(const QString& modelName) {
    QString digits;
    std::copy_if(modelName.begin(), modelName.end(), std::back_inserter(digits),
                 [](QChar each) { return each.isDigit(); });
    const int number = digits.toInt();
    return number > 99 ? number / 100 : number / 10;
}

bool QNGUIApplication::machineHasAutoSwitchingGPUs() const {
    static const bool has = [this] {
        constexpr qsizetype graphicsProcessors = 0; // none is known on this system
        const QString model = machineModelName();
        QString letters;
        std::copy_if(model.begin(), model.end(), std::back_inserter(letters),
                     [](QChar each) { return each.isLetter(); });
        return letters.compare(QLatin1String("MacBookPro"), Qt::CaseInsensitive) == 0 &&
               majorModelNumber(model) >= 6 && graphicsProcessors > 1;
    }();
    return has;
}
