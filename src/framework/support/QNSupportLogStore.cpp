#include "framework/support/QNSupportLogStore.h"

#include "framework/application/QNApplication.h"
#include "framework/redaction/Redactor.h"
#include "framework/support/XarArchive.h"

#include "platform/loop/DispatchQueue.h"
#include "platform/text/Format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <archive.h>
#include <cerrno>
#include <cstring>
#include <future>
#include <unistd.h>

using platform::formatted;

namespace {

QString kindOf(bool isCrashReport) {
    return isCrashReport ? QStringLiteral("CrashReport") : QStringLiteral("SupportInfo");
}

QString archivePath(const QString& name, const QDateTime& date, bool isCrashReport, int number) {
    const auto seconds = static_cast<double>(date.toSecsSinceEpoch());
    QString file =
        formatted(QStringLiteral("%@-%@-%.0f.xar"), name, kindOf(isCrashReport), seconds);
    if (number > 1) // two reports in one second
        file.insert(file.size() - 4, QStringLiteral(" (%1)").arg(number));
    return QDir(QDir::tempPath()).filePath(file.replace(QLatin1Char('/'), QLatin1Char('-')));
}

/// Everything else counts as text: a log that was cut off by a power failure has NULs in it.
bool isPicture(const QByteArray& data) {
    return data.startsWith("\x89PNG");
}

} // namespace

/// Entries in memory.
class QNSupportLogStore::Review final : public EntryWriter {
  public:
    std::vector<SupportEntry> entries;

  protected:
    bool writeEntry(const QByteArray& data, const QString& name) override {
        entries.push_back({name, data});
        return true;
    }
};

/// Reads files on the caller's thread, while another one stores the file before.
class QNSupportLogStore::PathReader final : public EntryWriter {
  public:
    explicit PathReader(QNSupportLogStore& store) : store_(store) {}

    /// Waits for the last one. False if it could not be stored.
    bool finish() { return !storing_.valid() || storing_.get(); }

  protected:
    bool writeEntry(const QByteArray& data, const QString& name) override {
        const bool isStored = finish();
        storing_ =
            std::async(std::launch::async, [this, data, name] { return store_.store(data, name); });
        return isStored;
    }

  private:
    QNSupportLogStore& store_;
    std::future<bool> storing_; // of the last one; waits for it at the end
};

QNSupportLogStore::QNSupportLogStore(const QString& name, const QDateTime& date, bool isCrashReport,
                                     const Redactor& redactor)
    : redactor_(redactor), queue_(platform::DispatchQueue::makeSerial("com.quarnel.supportlog")) {
    constexpr int most = 100;
    for (int number = 1; !archive_ && number <= most; ++number) {
        path_ = archivePath(name, date, isCrashReport, number);
        archive_ = XarArchive::archiveForWritingAtPath(path_);
        if (!archive_ && errno != EEXIST)
            break;
    }
    if (archive_) {
        isComplete_ = ::archive_write_set_format_option(archive_->xar(), "xar", "compression",
                                                        "bzip2") == ARCHIVE_OK;
    } else {
        QNLog(1, "Couldn't make the support archive %@: %s", path_, std::strerror(errno));
        path_.clear();
        isComplete_ = false;
    }
    writer_ = archive_.get();
}

QNSupportLogStore::QNSupportLogStore(const Redactor& redactor)
    : redactor_(redactor)
    , queue_(platform::DispatchQueue::makeSerial("com.quarnel.supportlog"))
    , review_(std::make_unique<Review>())
    , writer_(review_.get()) {}

QNSupportLogStore::~QNSupportLogStore() {
    if (!path_.isEmpty())
        QFile::remove(path_);
}

QByteArray QNSupportLogStore::redacted(QByteArray data) const {
    if (isPicture(data))
        return data;
    const std::string text =
        redactor_.redacted({data.constData(), static_cast<std::size_t>(data.size())});
    return QByteArray(text.data(), static_cast<qsizetype>(text.size()));
}

void QNSupportLogStore::addText(const QString& text, const QString& name) {
    addData(text.isNull() ? QByteArrayLiteral("(null)") : text.toUtf8(), name);
}

void QNSupportLogStore::addData(const QByteArray& data, const QString& name) {
    store(redacted(data), name);
}

void QNSupportLogStore::addUnchanged(const QByteArray& data, const QString& name) {
    store(data, name);
}

bool QNSupportLogStore::store(const QByteArray& data, const QString& name) {
    bool stored = true;
    queue_->sync([&] {
        stored = writer_ != nullptr && writer_->addData(data, name);
        isComplete_ = isComplete_ && stored;
    });
    if (!stored)
        QNLog(1, "Couldn't add %@ to the support archive", name);
    return stored;
}

void QNSupportLogStore::addPath(const QString& path) {
    const auto redact = [this](const QString& /*path*/, QByteArray content) {
        return std::optional(redacted(std::move(content)));
    };
    PathReader reader(*this);
    const bool isRead = reader.addPathRecursively(path, redact);
    if (!reader.finish() || !isRead)
        QNLog(1, "Couldn't add all of %@ to the support archive", path);
}

bool QNSupportLogStore::close() {
    queue_->sync([this] {
        if (archive_ && !archive_->closeArchive()) {
            isComplete_ = false;
            QNLog(1, "Couldn't write the support archive %@", path_);
        }
        writer_ = nullptr;
    });
    return isComplete_;
}

std::vector<SupportEntry> QNSupportLogStore::takeEntries() {
    std::vector<SupportEntry> entries;
    queue_->sync([&] {
        if (review_)
            entries = std::move(review_->entries);
    });
    return entries;
}

void QNSupportLogStore::removeLeftovers(const QString& name) {
    const QRegularExpression pattern(
        QStringLiteral("^%1-(CrashReport|SupportInfo)-[0-9]+( \\([0-9]+\\))?\\.xar$")
            .arg(QRegularExpression::escape(name)));
    const QDir folder(QDir::tempPath());
    for (const QFileInfo& file :
         folder.entryInfoList({name + QStringLiteral("-*.xar")}, QDir::Files | QDir::NoSymLinks)) {
        if (file.ownerId() == ::getuid() && pattern.match(file.fileName()).hasMatch())
            QFile::remove(file.filePath());
    }
}
