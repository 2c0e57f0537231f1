#pragma once

#include "framework/support/EntryWriter.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <memory>
#include <vector>

class Redactor;
class XarArchive;

namespace platform {
class DispatchQueue;
}

/// An entry of a support report, as it will be sent.
struct SupportEntry {
    QString name;
    QByteArray content;
};

/// The archive of a support report while it is made: a file in the folder for temporary files that
/// only this user can read, deleted with the object. Texts lose what tells about the person before
/// they are stored. What cannot be stored is logged. Any thread; additions wait for each other.
class QNSupportLogStore {
  public:
    /// The archive's file is named after `name`, the kind of the report and the date. `redactor`
    /// must outlive the store.
    QNSupportLogStore(const QString& name, const QDateTime& date, bool isCrashReport,
                      const Redactor& redactor);

    /// Keeps the entries instead of writing an archive, so that a person can look at them.
    explicit QNSupportLogStore(const Redactor& redactor);

    ~QNSupportLogStore();
    QNSupportLogStore(const QNSupportLogStore&) = delete;
    QNSupportLogStore& operator=(const QNSupportLogStore&) = delete;

    /// A null text is stored as "(null)".
    void addText(const QString& text, const QString& name);

    void addData(const QByteArray& data, const QString& name);

    /// The file, or all files of the folder, under its own name; see
    /// EntryWriter::addPathRecursively().
    void addPath(const QString& path);

    /// Adds what needs no redaction: what has been through it, or what the person has written.
    void addUnchanged(const QByteArray& data, const QString& name);

    /// Finishes the archive. False if something is missing in it.
    bool close();

    /// Empty if there is no archive.
    [[nodiscard]] const QString& path() const noexcept { return path_; }

    /// What has been kept; taken away from the store.
    [[nodiscard]] std::vector<SupportEntry> takeEntries();

    /// Deletes the archives that earlier runs of the program called `name` have left behind. Call
    /// it while none is being made.
    static void removeLeftovers(const QString& name);

  private:
    class Review;
    class PathReader;

    QByteArray redacted(QByteArray data) const;
    bool store(const QByteArray& data, const QString& name);

    const Redactor& redactor_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    QString path_;
    std::unique_ptr<XarArchive> archive_;
    std::unique_ptr<Review> review_;
    EntryWriter* writer_ = nullptr; // one of the two, or null
    bool isComplete_ = true;        // these three: in the queue
};
