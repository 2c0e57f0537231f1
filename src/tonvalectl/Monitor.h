#pragma once

#include "tonvalectl/BusClient.h"
#include "tonvalectl/Failure.h"
#include "tonvalectl/Mixer.h"

#include <gio/gio.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Prints all programs, and then a line for each event, until the application ends.
class Monitor {
  public:
    /// `bus` must outlive the object.
    Monitor(BusClient& bus, bool json);
    ~Monitor();
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    /// Returns when the application has ended or the output is closed. Throws Failure if it is not
    /// running, or the bus is lost.
    void run();

  private:
    static void closed(GDBusConnection* connection, gboolean vanished, GError* error, void* self);
    static void listed(GObject* connection, GAsyncResult* result, void* self);
    static void signalled(GDBusConnection* connection, const char* sender, const char* path,
                          const char* interface, const char* signal, GVariant* arguments,
                          void* self);

    void subscribe(const char* sender, const char* interface, const char* signal,
                   const char* argument);
    void handle(const std::string& path, const std::string& signal, GVariant* arguments);
    void add(GVariant* arguments);
    void remove(GVariant* arguments);
    void change(const std::string& path, GVariant* arguments);
    void tell(std::string_view event, const CtlProgram& program);
    void end();

    BusClient& bus_;
    const bool json_;
    GMainLoop* const loop_;
    std::vector<unsigned> subscriptions_;
    unsigned long closedHandler_;
    bool knows_ = false; // the list has arrived; earlier signals are included in it
    std::map<std::string, CtlProgram> programs_; // by path
    std::optional<Failure> failure_;
};
