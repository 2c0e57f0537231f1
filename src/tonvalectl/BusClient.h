#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

struct VariantDeleter {
    void operator()(GVariant* variant) const noexcept { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantDeleter>;

/// Client of the running application on the session bus, whose objects are described in
/// docs/control.md. Never starts it. One thread.
class BusClient {
  public:
    static constexpr const char* name = "com.quarnel.Tonvale";
    static constexpr const char* root = "/com/quarnel/Tonvale";

    /// Throws Failure if there is no session bus.
    BusClient();
    ~BusClient();
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;

    /// Calls a method of the application and waits for its reply, a tuple. Takes ownership of
    /// floating `arguments`; null for none. Throws Failure.
    Variant call(const std::string& path, const char* interface, const char* method,
                 GVariant* arguments = nullptr);

    /// Whether the bus itself replies.
    [[nodiscard]] bool isThere();

    GDBusConnection* connection() noexcept { return connection_; }

  private:
    GDBusConnection* connection_;
};
