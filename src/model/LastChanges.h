#pragma once

#include "model/ChangeSource.h"
#include "platform/base/WallClock.h"

#include <QHash>
#include <QString>

#include <optional>

/// Where the volume or mute of a program was changed last.
struct LastChange {
    ChangeSource::Kind source = ChangeSource::Kind::window;
    platform::WallClock::time_point time;
};

/// The last change of each program, by displayed name, since the application started. Main thread
/// only.
class LastChanges {
  public:
    /// A change that happens now.
    void note(const QString& displayName, ChangeSource::Kind source = ChangeSource::current()) {
        changes_.insert(displayName, {source, platform::WallClock::now()});
    }
    void forget(const QString& displayName) { changes_.remove(displayName); }

    [[nodiscard]] std::optional<LastChange> of(const QString& displayName) const {
        const auto found = changes_.constFind(displayName);
        return found != changes_.cend() ? std::optional(*found) : std::nullopt;
    }

  private:
    QHash<QString, LastChange> changes_; // no more than the preferences hold
};
