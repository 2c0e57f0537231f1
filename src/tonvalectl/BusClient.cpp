#include "tonvalectl/BusClient.h"

#include "tonvalectl/BusFailure.h"

namespace {

constexpr int patience = 5000; // ms

} // namespace

BusClient::BusClient() {
    GError* error = nullptr;
    connection_ = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (connection_ == nullptr)
        throw noBus(error);
    g_dbus_connection_set_exit_on_close(connection_, FALSE);
}

BusClient::~BusClient() {
    g_object_unref(connection_);
}

Variant BusClient::call(const std::string& path, const char* interface, const char* method,
                        GVariant* arguments) {
    GError* error = nullptr;
    Variant answer(g_dbus_connection_call_sync(connection_, name, path.c_str(), interface, method,
                                               arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                               patience, nullptr, &error));
    if (answer == nullptr)
        throw failureOf(error);
    return answer;
}

bool BusClient::isThere() {
    return Variant(g_dbus_connection_call_sync(connection_, "org.freedesktop.DBus",
                                               "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                               "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE,
                                               patience, nullptr, nullptr)) != nullptr;
}
