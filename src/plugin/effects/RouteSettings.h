#pragma once

#include "plugin/server/PipeWireHandles.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

struct pw_metadata;
struct pw_metadata_events;

/// The session manager's setting for future notification sounds: one entry of its metadata object
/// of this name. The run loop's thread only; destroy it before the server's connection.
class RouteSettings {
  public:
    /// metadata.name of the object.
    static constexpr const char* name = "route-settings";

    /// Called with the entry's initial value and after every change, including ours; with nothing
    /// when it is removed. Not called from within the constructor or set().
    using Told = std::function<void(const std::optional<std::string>& value)>;

    /// Watches the metadata object `id`.
    RouteSettings(pw_registry& registry, std::uint32_t id, Told told);
    RouteSettings(const RouteSettings&) = delete;
    RouteSettings& operator=(const RouteSettings&) = delete;

    [[nodiscard]] std::uint32_t id() const noexcept { return id_; }

    /// Sets the entry, as JSON; Told is called when the server has applied it. Does nothing if the
    /// object could not be watched or no longer exists.
    void set(const std::string& value);

  private:
    void changed(std::uint32_t subject, const char* key, const char* value);

    static const pw_metadata_events events;

    const std::uint32_t id_;
    const Told told_;
    ProxyHandle<pw_metadata> metadata_;
    ListenerHook hook_;
};
