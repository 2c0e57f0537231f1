#include "platform/defaults/DefaultsFile.h"

#include "platform/base/Directories.h"
#include "platform/base/WallClock.h"
#include "platform/defaults/PropertyList.h"
#include "platform/plist/PropertyListNode.h"

#include <QDateTime>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

namespace fs = std::filesystem;

bool isBusy(int result) {
    return result != 0 && (errno == EWOULDBLOCK || errno == EINTR);
}

/// Seconds and nanoseconds; unique for each replacement of a file.
std::pair<std::time_t, long> lastChangeOf(const fs::path& file) {
    struct stat facts {};
    ::stat(file.c_str(), &facts);
    return {facts.st_ctim.tv_sec, facts.st_ctim.tv_nsec};
}

std::string textOf(int error) {
    return QString::fromLocal8Bit(std::strerror(error)).toStdString();
}

QVariantMap merge(QVariantMap values, const DefaultsFile::Changes& changes) {
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        if (change.value().isValid())
            values.insert(change.key(), change.value());
        else
            values.remove(change.key());
    }
    return values;
}

std::string stampNow() {
    const auto now = WallClock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now);
    return QDateTime::fromMSecsSinceEpoch(milliseconds.count())
        .toString(QStringLiteral("yyyyMMdd-HHmmss"))
        .toStdString();
}

/// rename() that fails with EEXIST in place of losing what is at `to`.
int moveWithoutLoss(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return -1;
    return ::link(from.c_str(), to.c_str()) == 0 ? ::unlink(from.c_str()) : -1;
}

} // namespace

DefaultsFile::DefaultsFile(fs::path path, DefaultsFileCalls& calls)
    : path_(std::move(path)), calls_(calls), target_(path_) {}

DefaultsFile::Outcome DefaultsFile::update(const QVariantMap& known, const Changes& changes,
                                           bool isDurable) {
    if (!followLinks())
        return failed("Couldn't follow the links of");
    const Reading now = read();
    if (now.state == State::unreadable) {
        errno = now.error;
        return failed("Couldn't read");
    }
    const bool isAsKnown =
        now.state == State::present || (now.state == State::missing && !isRestoring_);
    if (!changes.isEmpty() || !isAsKnown)
        return updateLocked(known, changes, isDurable);
    return inFile(now.values, isDurable);
}

DefaultsFile::Outcome DefaultsFile::updateLocked(const QVariantMap& known, const Changes& changes,
                                                 bool isDurable) {
    if (!makeDirectories(target_.parent_path(), S_IRWXU))
        return failed("Couldn't create the folder of", known);
    const FileDescriptor held = lock();
    const Reading now = read();
    if (now.state == State::unreadable) {
        errno = now.error;
        return failed("Couldn't read");
    }
    std::string setAside;
    if (now.state == State::damaged) {
        setAside = moveAside();
        if (setAside.empty())
            return failed("Couldn't move aside the damaged");
        isRestoring_ = true;
    }
    const QVariantMap base = now.state == State::present ? now.values
                             : isRestoring_              ? known
                                                         : QVariantMap();
    QVariantMap merged = merge(base, changes);
    Outcome outcome = isSameValue(merged, now.values)
                          ? inFile(std::move(merged), isDurable)
                          : replace(std::move(merged), static_cast<bool>(held), isDurable);
    if (!outcome.failure.empty())
        outcome.values = base;
    else
        isRestoring_ = false;
    outcome.setAside = std::move(setAside);
    return outcome;
}

DefaultsFile::Outcome DefaultsFile::replace(QVariantMap merged, bool isAlone, bool isDurable) {
    if (!write(propertyListXml(merged), isAlone))
        return failed("Couldn't save");
    isVolatile_ = true;
    return inFile(std::move(merged), isDurable);
}

DefaultsFile::Outcome DefaultsFile::inFile(QVariantMap values, bool isDurable) {
    if (isDurable && !makeDurable())
        return failed("Couldn't save", std::move(values));
    return {.values = std::move(values)};
}

DefaultsFile::Reading DefaultsFile::read() const {
    // A pipe in the file's place would otherwise hold us up.
    const FileDescriptor file(
        calls_.open(target_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0));
    if (!file) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        return {isMissing ? State::missing : State::unreadable, {}, errno};
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        return {State::unreadable, {}, errno};
    if (!S_ISREG(status.st_mode))
        return {State::unreadable, {}, S_ISDIR(status.st_mode) ? EISDIR : EINVAL};
    if (static_cast<std::size_t>(status.st_size) > propertyListBytes)
        return {State::damaged, {}, 0};
    const std::optional<QByteArray> bytes = readAll(file.get(), status);
    if (!bytes)
        return {State::unreadable, {}, errno};
    const std::optional<QVariant> root = parsePropertyList(*bytes);
    if (!root || root->typeId() != QMetaType::QVariantMap)
        return {State::damaged, {}, 0};
    return {State::present, root->toMap(), 0};
}

std::optional<QByteArray> DefaultsFile::readAll(int file, const struct stat& status) const {
    QByteArray bytes(static_cast<qsizetype>(status.st_size) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    for (;;) {
        if (size == bytes.size())
            bytes.resize(2 * size);
        const ssize_t count =
            calls_.read(file, bytes.data() + size, static_cast<std::size_t>(bytes.size() - size));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {};
        if (count == 0 || static_cast<std::size_t>(size) > propertyListBytes) {
            bytes.truncate(size);
            return bytes;
        }
        size += count;
    }
}

/// Empty when there is no lock to be had: a program that stops with it, or a file system that knows
/// none, must not cost our values. Nobody stops while the file is being replaced: then another
/// program is only busier than we are, and going on without the lock would lose what it saves.
FileDescriptor DefaultsFile::lock() const {
    constexpr int attempts = 200;
    constexpr int busyAttempts = 10 * attempts;
    constexpr std::chrono::milliseconds pause{5};
    const fs::path name = target_.parent_path() / ("." + target_.filename().string() + ".lock");
    FileDescriptor file(
        ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!file)
        return {};
    auto seen = lastChangeOf(target_);
    int result = ::flock(file.get(), LOCK_EX | LOCK_NB);
    for (int i = 0, still = 0; i < busyAttempts && still < attempts && isBusy(result); ++i) {
        std::this_thread::sleep_for(pause);
        const auto now = lastChangeOf(target_);
        still = now == seen ? still + 1 : 0;
        seen = now;
        result = ::flock(file.get(), LOCK_EX | LOCK_NB);
    }
    return result == 0 ? std::move(file) : FileDescriptor();
}

/// The new path; empty, with errno set, when the file cannot be moved.
std::string DefaultsFile::moveAside() const {
    const std::string name = target_.string() + ".damaged-" + stampNow();
    std::string free = name;
    for (int i = 2; moveWithoutLoss(target_, free) != 0; ++i) {
        if (errno != EEXIST)
            return {};
        free = name + "-" + std::to_string(i);
    }
    return free;
}

/// Whoever holds the lock may use the one name, and with that clears away what a program left there
/// when it was killed.
bool DefaultsFile::write(const QByteArray& xml, bool isAlone) const {
    const std::string name = "." + target_.filename().string() + ".new";
    const fs::path temporary =
        target_.parent_path() / (isAlone ? name : name + "-" + std::to_string(::getpid()));
    ::unlink(temporary.c_str());
    if (writeTemporary(temporary, xml) && calls_.rename(temporary.c_str(), target_.c_str()) == 0)
        return true;
    const int error = errno;
    ::unlink(temporary.c_str());
    errno = error;
    return false;
}

/// The content is on the disk before the file gets its name: some file systems would have the name
/// outlive a crash of the machine without the content.
bool DefaultsFile::writeTemporary(const fs::path& temporary, const QByteArray& xml) const {
    const FileDescriptor file(calls_.open(temporary.c_str(),
                                          O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                                          S_IRUSR | S_IWUSR));
    if (!file)
        return false;
    for (qsizetype done = 0; done < xml.size();) {
        const ssize_t count = calls_.write(file.get(), xml.constData() + done,
                                           static_cast<std::size_t>(xml.size() - done));
        if (count < 0 && errno != EINTR)
            return false;
        done += count > 0 ? count : 0;
    }
    keepOwnerAndMode(file.get());
    return calls_.sync(file.get()) == 0;
}

/// Those of the file that is about to be replaced; that a program runs as root must not lock its
/// user out.
void DefaultsFile::keepOwnerAndMode(int file) const {
    struct stat former {};
    struct stat own {};
    if (::stat(target_.c_str(), &former) != 0 || ::fstat(file, &own) != 0)
        return;
    if (former.st_uid != own.st_uid || former.st_gid != own.st_gid)
        (void)!::fchown(file, former.st_uid, former.st_gid);
    ::fchmod(file, former.st_mode & ALLPERMS);
}

bool DefaultsFile::makeDurable() {
    if (isVolatile_ && !syncFolder())
        return false;
    isVolatile_ = false;
    return true;
}

bool DefaultsFile::syncFolder() const {
    const FileDescriptor folder(
        calls_.open(target_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    // Some file systems have nothing to do for a folder, and say so by EINVAL.
    return folder && (calls_.sync(folder.get()) == 0 || errno == EINVAL);
}

/// The last link may lead to a missing file. False, with errno set, for a cycle.
bool DefaultsFile::followLinks() {
    constexpr int bound = 40; // the kernel's
    target_ = path_;
    std::error_code error;
    for (int i = 0; fs::is_symlink(fs::symlink_status(target_, error)); ++i) {
        if (i == bound) {
            errno = ELOOP;
            return false;
        }
        const fs::path next = fs::read_symlink(target_, error);
        if (error) {
            errno = error.value();
            return false;
        }
        target_ = target_.parent_path() / next;
    }
    return true;
}

/// As errno has it.
DefaultsFile::Outcome DefaultsFile::failed(const char* doing,
                                           std::optional<QVariantMap> values) const {
    const int error = errno;
    return {.values = std::move(values),
            .failure = std::string(doing) + " " + target_.string() + ": " + textOf(error),
            .file = target_.string(),
            .lacksRoom = error == ENOSPC || error == EDQUOT};
}

} // namespace platform
