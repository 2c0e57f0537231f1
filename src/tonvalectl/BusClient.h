#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

struct VariantDeleter {
    void operator()(GVariant* variant) const noexcept { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantDeleter>;

/// The way to the running application over the session bus, whose objects docs/control.md tells.
/// Never starts it. One thread.
class BusClient {
  public:
    static constexpr const char* name = "com.quarnel.Tonvale";
    static constexpr const char* root = "/com/quarnel/Tonvale";

    /// Throws Failure when there is no session bus.
    BusClient();
    ~BusClient();
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;

    /// Calls a method of the application's and waits for its answer, which is a tuple. Takes
    /// floating `arguments`, null for none, over. Throws Failure.
    Variant call(const std::string& path, const char* interface, const char* method,
                 GVariant* arguments = nullptr);

    /// Whether the bus itself answers.
    bool isThere();

    GDBusConnection* connection() noexcept { return connection_; }

  private:
    GDBusConnection* connection_;
};
