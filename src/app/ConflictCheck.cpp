#include "app/ConflictCheck.h"

#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/window/Alert.h"

#include <QCoreApplication>
#include <QFileInfo>

using platform::Alert;
using platform::formatted;

namespace {

constexpr const char* plugin = "/Audio/Plug-Ins/HAL/Mivo.plugin";
const QString product = QStringLiteral("Mivo");

} // namespace

bool ConflictCheck::isConflicting(const QString& localLibrary) {
    return !localLibrary.isEmpty() && QFileInfo::exists(localLibrary + QLatin1String(plugin));
}

void ConflictCheck::tell() {
    const QString name = QCoreApplication::applicationName();
    Alert{
        .kind = Alert::Kind::critical,
        .title = formatted(Texts::tr("%@ is not compatible with %@."), product, name),
        .message = formatted(
            Texts::tr("%@ cannot function properly if %@ is installed. Please uninstall %@ before "
                      "using %@."),
            name, product, product, name),
        .defaultButton = Texts::tr("Quit")}
        .run();
}
