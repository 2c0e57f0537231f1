#include "tninstaller/InstallLock.h"

#include "tninstaller/InstallFailure.h"

#include "platform/base/MonotonicClock.h"

#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr const char* lockName = ".tninstaller.lock";

/// One of which nobody else can have a descriptor.
bool isPrivate(const struct stat& status) noexcept {
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink <= 1 &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// Whether a file of somebody else's is why ours cannot be opened, rather than the disk.
bool isByWhatIsThere(int error) noexcept {
    return error == EACCES || error == EPERM || error == ELOOP || error == EISDIR || error == ENXIO;
}

} // namespace

InstallLock::InstallLock(const GuardedFolder& folder, std::chrono::milliseconds patience)
    : folder_(folder) {
    constexpr auto pause = 20ms;
    const auto end = platform::MonotonicClock::now() + patience;
    while (take() == Outcome::busy) {
        if (platform::MonotonicClock::now() >= end)
            throw InstallFailure(InstallCode::internal,
                                 "Another TNInstaller is at work in " + folder.path());
        std::this_thread::sleep_for(pause);
    }
}

InstallLock::Outcome InstallLock::take() {
    struct stat status {};
    file_.reset(::openat(folder_.descriptor(), lockName,
                         O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                         S_IRUSR | S_IWUSR));
    if (!file_ && isByWhatIsThere(errno))
        return Outcome::foreign;
    if (!file_)
        throw failureAt(folder_.path(), InstallCode::notWritten);
    if (::fstat(file_.get(), &status) != 0 || !isPrivate(status)) {
        file_.reset();
        return Outcome::foreign;
    }
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) == 0 && ::fstat(file_.get(), &status) == 0 &&
        status.st_nlink > 0) // else the other one has removed it meanwhile
        return Outcome::taken;
    file_.reset();
    return Outcome::busy;
}

InstallLock::~InstallLock() {
    if (file_)
        ::unlinkat(folder_.descriptor(), lockName, 0);
}
