#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace platform {
class UserDefaults;
}

/// The displayed names of all programs that have ever been seen, including those without other
/// stored data, as kept in the preferences. Bounded: the oldest are dropped. Main thread only.
class SeenApps {
  public:
    /// `defaults` must outlive the object.
    explicit SeenApps(platform::UserDefaults& defaults);

    /// The oldest first, in their form in a property list.
    [[nodiscard]] const QStringList& names() const noexcept { return names_; }

    [[nodiscard]] bool contains(const QString& displayName) const;

    /// Each returns whether the list has changed; a changed list has been stored in the defaults.
    bool add(const QStringList& displayNames);
    bool remove(const QString& displayName);

    /// The percent, 0 to 100, for programs that are not in the list; nothing for full volume.
    [[nodiscard]] std::optional<int> defaultVolume() const;
    void setDefaultVolume(std::optional<int> percent);

  private:
    void store();

    platform::UserDefaults& defaults_;
    QStringList names_;
    QSet<QString> known_; // the same, to look them up
};
