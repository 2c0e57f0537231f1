#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace platform {
class UserDefaults;
}

/// The displayed names of all programs that have ever been seen here, also of those of which
/// nothing else is remembered, as the preferences keep them. Bounded: of too many the oldest are
/// forgotten. Main thread only.
class SeenApps {
  public:
    /// `defaults` must outlive the object.
    explicit SeenApps(platform::UserDefaults& defaults);

    /// The oldest first, as a property list holds them.
    const QStringList& names() const noexcept { return names_; }

    bool contains(const QString& displayName) const;

    /// Each answers whether that has changed the list, which then is in the defaults.
    bool add(const QStringList& displayNames);
    bool remove(const QString& displayName);

    /// The percent, 0 to 100, that a program gets that is not among them; nothing when it keeps
    /// full volume.
    std::optional<int> defaultVolume() const;
    void setDefaultVolume(std::optional<int> percent);

  private:
    void store();

    platform::UserDefaults& defaults_;
    QStringList names_;
    QSet<QString> known_; // the same, to look them up
};
