#pragma once

#include "platform/base/FileDescriptor.h"
#include "platform/defaults/DefaultsFileCalls.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace platform {

/// The file of user defaults: a property list with one dictionary, which several programs may
/// change. It is replaced as a whole, so that whoever reads it, also after a crash, finds one of
/// the states that were written. A link to it is followed. New values go over what the file holds
/// by then, under a lock that the other writers of this class respect. What cannot be read is never
/// written over; what is damaged is moved aside first.
///
/// One thread at a time.
class DefaultsFile {
  public:
    /// What to write: a value for a key, or invalid to remove it.
    using Changes = QMap<QString, QVariant>;

    struct Outcome {
        /// What the file holds now, or should hold when it could not be written after it had been
        /// moved aside. Nothing when it cannot be read.
        std::optional<QVariantMap> values = {};
        /// For people, why the changes are not in the file, or why it cannot be read.
        std::string failure = {};
        /// The file that `failure` names.
        std::string file = {};
        /// Whether the disk is full, or the person's share of it. That may end at any time.
        bool lacksRoom = false;
        /// The new path of what was damaged and has been moved aside.
        std::string setAside = {};
    };

    /// Touches nothing yet. `path` is absolute; `calls` must outlive the object.
    DefaultsFile(std::filesystem::path path, DefaultsFileCalls& calls);

    /// Reads the file and writes it back with the changes, when they make a difference. Makes the
    /// folder (mode 0700) and the file (0600) that are missing; without changes it makes nothing.
    /// `known`, what it held last time, takes the place of what turns out to be damaged. When
    /// `isDurable`, the file outlives a crash of the machine once this returns; otherwise, after
    /// such a crash, it may still be in its former state.
    Outcome update(const QVariantMap& known, const Changes& changes, bool isDurable);

  private:
    enum class State { present, missing, damaged, unreadable };
    struct Reading {
        State state = State::unreadable;
        QVariantMap values;
        int error = 0;
    };

    Outcome updateLocked(const QVariantMap& known, const Changes& changes, bool isDurable);
    Outcome replace(QVariantMap merged, bool isAlone, bool isDurable);
    Outcome inFile(QVariantMap values, bool isDurable);
    Reading read() const;
    std::optional<QByteArray> readAll(int file, const struct stat& status) const;
    FileDescriptor lock() const;
    std::string moveAside() const;
    bool write(const QByteArray& xml, bool isAlone) const;
    bool writeTemporary(const std::filesystem::path& temporary, const QByteArray& xml) const;
    void keepOwnerAndMode(int file) const;
    bool syncFolder() const;
    bool makeDurable();
    bool followLinks();
    Outcome failed(const char* doing, std::optional<QVariantMap> values = {}) const;

    const std::filesystem::path path_;
    DefaultsFileCalls& calls_;
    std::filesystem::path target_; // path_ with links followed
    bool isRestoring_ = false;     // moved aside and not written again yet
    bool isVolatile_ = false;      // the last replacement may not outlive a crash of the machine
};

} // namespace platform
