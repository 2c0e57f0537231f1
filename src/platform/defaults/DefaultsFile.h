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
/// change. It is replaced atomically, so that readers find a complete state, even after a crash.
/// Links to it are followed. New values are merged into the file's current content, under a lock
/// that all writers of this class use. An unreadable file is never overwritten; a damaged one is
/// moved aside first.
///
/// One thread at a time.
class DefaultsFile {
  public:
    /// What to write: a value for a key, or invalid to remove it.
    using Changes = QMap<QString, QVariant>;

    struct Outcome {
        /// The file's content now, or what it should be if it could not be written after it had
        /// been moved aside. Nothing if it cannot be read.
        std::optional<QVariantMap> values = {};
        /// Text for the user: why the changes are not in the file, or why it cannot be read.
        std::string failure = {};
        /// The file that `failure` names.
        std::string file = {};
        /// Whether the disk or the user's quota is full. That may end at any time.
        bool lacksRoom = false;
        /// The new path of a damaged file that has been moved aside.
        std::string setAside = {};
    };

    /// Does not touch the file yet. `path` is absolute; `calls` must outlive the object.
    DefaultsFile(std::filesystem::path path, DefaultsFileCalls& calls);

    /// Reads the file and writes it back if the changes make a difference. Creates a missing folder
    /// (mode 0700) and file (0600), but not without changes. `known`, the last known content,
    /// replaces that of a damaged file. If `isDurable`, the new content survives a crash of the
    /// machine once this returns; otherwise the file may be in its former state after such a crash.
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
    bool isRestoring_ = false;     // moved aside and not rewritten yet
    bool isVolatile_ = false;      // the last replacement may not outlive a crash of the machine
};

} // namespace platform
