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

} // namespace

InstallLock::InstallLock(const GuardedFolder& folder) : folder_(folder) {
    constexpr auto patience = 60s;
    constexpr auto pause = 20ms;
    const auto end = platform::MonotonicClock::now() + patience;
    while (!take()) {
        if (platform::MonotonicClock::now() >= end)
            throw InstallFailure(InstallCode::internal,
                                 "Another TNInstaller is at work in " + folder.path());
        std::this_thread::sleep_for(pause);
    }
}

/// False while another one has it.
bool InstallLock::take() {
    file_.reset(::openat(folder_.descriptor(), lockName,
                         O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                         S_IRUSR | S_IWUSR));
    if (!file_)
        throw failureAt(folder_.path(), InstallCode::notWritten);
    struct stat status {};
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) == 0 && ::fstat(file_.get(), &status) == 0 &&
        status.st_nlink > 0) // else the other one has removed it meanwhile
        return true;
    file_.reset();
    return false;
}

InstallLock::~InstallLock() {
    ::unlinkat(folder_.descriptor(), lockName, 0);
}
