#include "tonvalectl/Monitor.h"

#include "platform/base/MarkedText.h"
#include "tonvalectl/BusFailure.h"
#include "tonvalectl/Report.h"

#include <cstdio>

namespace {

constexpr const char* manager = "org.freedesktop.DBus.ObjectManager";

} // namespace

Monitor::Monitor(BusClient& bus, bool json)
    : bus_(bus)
    , json_(json)
    , loop_(g_main_loop_new(nullptr, FALSE))
    , closedHandler_(g_signal_connect(bus.connection(), "closed", G_CALLBACK(&closed), this)) {
    subscribe("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", BusClient::name);
    subscribe(BusClient::name, manager, nullptr, nullptr);
    subscribe(BusClient::name, "org.freedesktop.DBus.Properties", "PropertiesChanged",
              Mixer::programInterface);
}

Monitor::~Monitor() {
    g_signal_handler_disconnect(bus_.connection(), closedHandler_);
    for (const unsigned subscription : subscriptions_)
        g_dbus_connection_signal_unsubscribe(bus_.connection(), subscription);
    g_main_loop_unref(loop_);
}

void Monitor::subscribe(const char* sender, const char* interface, const char* signal,
                        const char* argument) {
    subscriptions_.push_back(g_dbus_connection_signal_subscribe(
        bus_.connection(), sender, interface, signal, nullptr, argument, G_DBUS_SIGNAL_FLAGS_NONE,
        &signalled, this, nullptr));
}

/// Answers and signals come in the order in which they were sent.
void Monitor::run() {
    g_dbus_connection_call(bus_.connection(), BusClient::name, BusClient::root, manager,
                           "GetManagedObjects", nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                           -1, nullptr, &listed, this);
    g_main_loop_run(loop_);
    if (!failure_ && !bus_.isThere())
        failure_.emplace(busHasGone()); // all programs seemed to end before it
    if (failure_)
        throw Failure(*failure_);
}

void Monitor::closed(GDBusConnection* /*connection*/, gboolean /*vanished*/, GError* /*error*/,
                     void* self) {
    auto& monitor = *static_cast<Monitor*>(self);
    monitor.failure_.emplace(busHasGone());
    monitor.end();
}

void Monitor::listed(GObject* connection, GAsyncResult* result, void* self) {
    auto& monitor = *static_cast<Monitor*>(self);
    GError* error = nullptr;
    const Variant answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &error));
    if (answer == nullptr) {
        if (!monitor.failure_)
            monitor.failure_.emplace(failureOf(error));
        else
            g_error_free(error);
        monitor.end();
        return;
    }
    monitor.knows_ = true;
    for (const CtlProgram& program : Mixer::programsIn(answer.get())) {
        monitor.programs_[program.path] = program;
        monitor.tell(MARKED_TEXT("PlainTexts", "added"), program);
    }
}

void Monitor::signalled(GDBusConnection* /*connection*/, const char* /*sender*/, const char* path,
                        const char* /*interface*/, const char* signal, GVariant* arguments,
                        void* self) {
    auto& monitor = *static_cast<Monitor*>(self);
    if (monitor.knows_)
        monitor.handle(path, signal, arguments);
}

void Monitor::handle(const std::string& path, const std::string& signal, GVariant* arguments) {
    if (signal == "NameOwnerChanged")
        end();
    else if (signal == "InterfacesAdded" &&
             g_variant_is_of_type(arguments, G_VARIANT_TYPE("(oa{sa{sv}})")))
        add(arguments);
    else if (signal == "InterfacesRemoved" &&
             g_variant_is_of_type(arguments, G_VARIANT_TYPE("(oas)")))
        remove(arguments);
    else if (signal == "PropertiesChanged" &&
             g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{sv}as)")))
        change(path, arguments);
}

void Monitor::add(GVariant* arguments) {
    const char* path = nullptr;
    GVariant* interfaces = nullptr;
    g_variant_get(arguments, "(&o@a{sa{sv}})", &path, &interfaces);
    const Variant owned(interfaces);
    const Variant properties(
        g_variant_lookup_value(interfaces, Mixer::programInterface, G_VARIANT_TYPE_VARDICT));
    if (properties == nullptr)
        return;
    CtlProgram& program = programs_[path];
    program.path = path;
    program.update(properties.get());
    tell(MARKED_TEXT("PlainTexts", "added"), program);
}

void Monitor::remove(GVariant* arguments) {
    const char* path = nullptr;
    g_variant_get_child(arguments, 0, "&o", &path);
    const auto program = programs_.find(path);
    if (program == programs_.end())
        return;
    tell(MARKED_TEXT("PlainTexts", "removed"), program->second);
    programs_.erase(program);
}

void Monitor::change(const std::string& path, GVariant* arguments) {
    const auto program = programs_.find(path);
    if (program == programs_.end())
        return;
    const Variant properties(g_variant_get_child_value(arguments, 1));
    program->second.update(properties.get());
    tell(MARKED_TEXT("PlainTexts", "changed"), program->second);
}

void Monitor::tell(std::string_view event, const CtlProgram& program) {
    const std::string line =
        json_ ? Report::jsonEvent(event, program) : Report::event(event, program);
    if (std::fputs(line.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        end();
}

void Monitor::end() {
    g_main_loop_quit(loop_);
}
