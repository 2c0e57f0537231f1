#include "framework/support/XarArchive.h"

#include "platform/base/WallClock.h"

#include <QFile>

#include <archive.h>
#include <archive_entry.h>
#include <clocale>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// While it lives, the library converts names of this thread as UTF-8, whatever the program's
/// locale.
class Utf8Locale {
  public:
    Utf8Locale()
        : locale_(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
        , previous_(locale_ != nullptr ? ::uselocale(locale_) : nullptr) {}
    ~Utf8Locale() {
        if (locale_ == nullptr)
            return;
        ::uselocale(previous_);
        ::freelocale(locale_);
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

  private:
    const locale_t locale_;
    const locale_t previous_;
};

struct FreeEntry {
    void operator()(archive_entry* entry) const noexcept { ::archive_entry_free(entry); }
};

} // namespace

void XarArchive::Free::operator()(archive* one) const noexcept {
    ::archive_write_free(one);
}

std::unique_ptr<XarArchive> XarArchive::archiveForWritingAtPath(const QString& path) {
    platform::FileDescriptor file(::open(QFile::encodeName(path).constData(),
                                         O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                         S_IRUSR | S_IWUSR));
    if (!file)
        return nullptr;
    return std::unique_ptr<XarArchive>(new XarArchive(std::move(file)));
}

XarArchive::XarArchive(platform::FileDescriptor file)
    : file_(std::move(file)), archive_(::archive_write_new()) {
    isWhole_ = archive_ && ::archive_write_set_format_xar(archive_.get()) == ARCHIVE_OK &&
               ::archive_write_set_bytes_in_last_block(archive_.get(), 1) == ARCHIVE_OK;
}

XarArchive::~XarArchive() {
    if (isOpen_)
        ::archive_write_fail(archive_.get()); // or freeing it would go on writing
}

bool XarArchive::writeEntry(const QByteArray& data, const QString& name) {
    if (!isWhole_)
        return false;
    isWhole_ = false; // until all of it has been written
    const Utf8Locale locale;
    if (!isOpen_) {
        if (::archive_write_open_fd(archive_.get(), file_.get()) != ARCHIVE_OK)
            return false;
        isOpen_ = true;
    }
    isWhole_ = write(data, name);
    return isWhole_;
}

/// Some readers take entries without numbers of their own for links to the first one.
bool XarArchive::write(const QByteArray& data, const QString& name) {
    const std::unique_ptr<archive_entry, FreeEntry> entry(::archive_entry_new());
    if (!entry)
        return false;
    ++entries_;
    const auto now = std::chrono::floor<std::chrono::seconds>(platform::WallClock::now());
    ::archive_entry_copy_pathname(entry.get(), name.toUtf8().constData());
    ::archive_entry_set_filetype(entry.get(), AE_IFREG);
    ::archive_entry_set_perm(entry.get(), S_IRUSR | S_IWUSR);
    ::archive_entry_set_size(entry.get(), data.size());
    ::archive_entry_set_mtime(entry.get(), now.time_since_epoch().count(), 0);
    ::archive_entry_set_ino(entry.get(), entries_);
    ::archive_entry_set_nlink(entry.get(), 1);
    if (::archive_write_header(archive_.get(), entry.get()) != ARCHIVE_OK)
        return false;
    for (qsizetype done = 0; done < data.size();) {
        const auto written = ::archive_write_data(archive_.get(), data.constData() + done,
                                                  static_cast<std::size_t>(data.size() - done));
        if (written <= 0)
            return false;
        done += static_cast<qsizetype>(written);
    }
    return ::archive_write_finish_entry(archive_.get()) == ARCHIVE_OK;
}

bool XarArchive::closeArchive() {
    const Utf8Locale locale;
    if (isWhole_ && !isOpen_)
        isOpen_ = ::archive_write_open_fd(archive_.get(), file_.get()) == ARCHIVE_OK;
    isWhole_ = isWhole_ && isOpen_ && ::archive_write_close(archive_.get()) == ARCHIVE_OK;
    isOpen_ = false;
    return std::exchange(isWhole_, false);
}
