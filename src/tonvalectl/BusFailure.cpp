#include "tonvalectl/BusFailure.h"

#include "platform/language/PlainTexts.h"

#include <memory>

namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

bool isNamed(const GError& error, const char* name) {
    const Text remote(g_dbus_error_get_remote_error(&error), &g_free);
    return remote != nullptr && std::string(remote.get()) == name;
}

bool isBus(const GError& error, GDBusError code) {
    return g_error_matches(&error, G_DBUS_ERROR, code) != FALSE;
}

bool meansNotRunning(const GError& error) {
    return isBus(error, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
           isBus(error, G_DBUS_ERROR_NAME_HAS_NO_OWNER) || isBus(error, G_DBUS_ERROR_NO_REPLY);
}

/// The application's error message.
std::string told(GError& error) {
    g_dbus_error_strip_remote_error(&error);
    return error.message;
}

Failure meant(GError& error) {
    if (isNamed(error, "com.quarnel.Tonvale.Error.NotControllable"))
        return {ExitCode::notControllable,
                PlainTexts::filled(PlainTexts::tr("The volume can't be set: %1"), {told(error)})};
    if (isNamed(error, "com.quarnel.Tonvale.Error.NothingRemembered"))
        return {ExitCode::noSuchProgram, PlainTexts::tr("The program has no saved settings.")};
    if (isNamed(error, "com.quarnel.Tonvale.Error.NoSuchProgram") ||
        isBus(error, G_DBUS_ERROR_UNKNOWN_OBJECT))
        return {ExitCode::noSuchProgram, PlainTexts::tr("The program no longer exists.")};
    if (meansNotRunning(error))
        return notRunning();
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CLOSED) ||
        isBus(error, G_DBUS_ERROR_DISCONNECTED))
        return busHasGone();
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT))
        return {ExitCode::failed, PlainTexts::tr("Tonvale does not answer.")};
    return {ExitCode::failed,
            PlainTexts::filled(PlainTexts::tr("Tonvale refused: %1"), {told(error)})};
}

} // namespace

Failure noBus(GError* error) {
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, &g_error_free);
    return {ExitCode::busLost,
            PlainTexts::filled(PlainTexts::tr("There is no session bus: %1"), {owned->message})};
}

Failure failureOf(GError* error) {
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, &g_error_free);
    return meant(*owned);
}

Failure busHasGone() {
    return {ExitCode::busLost, PlainTexts::tr("The connection to the session bus was lost.")};
}

Failure notRunning() {
    return {ExitCode::notRunning, PlainTexts::tr("Tonvale is not running.")};
}
