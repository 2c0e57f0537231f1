#include "tninstaller/Installer.h"

#include "platform/base/Directories.h"
#include "platform/base/SystemLog.h"
#include "platform/base/ToolHandshake.h"

#include <array>
#include <climits>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

/// As far as its rights go.
void raiseLimits() noexcept {
    constexpr rlimit none{RLIM_INFINITY, RLIM_INFINITY};
    for (const auto resource : {RLIMIT_FSIZE, RLIMIT_CPU, RLIMIT_AS, RLIMIT_DATA})
        ::setrlimit(resource, &none);
    constexpr rlim_t manyFiles = 1024;
    constexpr rlimit files{manyFiles, manyFiles};
    ::setrlimit(RLIMIT_NOFILE, &files);
    constexpr rlimit noDumps{0, 0};
    ::setrlimit(RLIMIT_CORE, &noDumps);
}

/// What a caller hands down must not change what the tool does.
void prepare() {
    while (true) { // no file of ours becomes a standard descriptor
        const int descriptor = ::open("/dev/null", O_RDWR);
        if (descriptor < 0 || descriptor > STDERR_FILENO) {
            ::close(descriptor);
            break;
        }
    }
    // A folder is as it stays from the beginning, whatever comes after it.
    ::umask(S_IWGRP | S_IWOTH);
    for (const int ignored : {SIGPIPE, SIGXFSZ, SIGTSTP, SIGTTIN, SIGTTOU, SIGINT, SIGQUIT, SIGHUP})
        std::signal(ignored, SIG_IGN);
    raiseLimits();
    if (::chdir("/") != 0)
        throw InstallFailure(InstallCode::internal, "There is no root folder");
}

std::string ownPath() {
    std::array<char, PATH_MAX> path{};
    const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
    if (size <= 0 || static_cast<std::size_t>(size) == path.size())
        throw failureAt("/proc/self/exe", InstallCode::unsafePlace);
    return {path.data(), static_cast<std::size_t>(size)};
}

/// Tells that the user has agreed, and waits. False if nothing shall be changed.
bool awaitWord() {
    char answer = '\0';
    return ::write(STDERR_FILENO, &platform::toolIsAuthorized, 1) == 1 &&
           ::read(STDIN_FILENO, &answer, 1) == 1 && answer == platform::toolMayGoOn;
}

InstallerReply carryOut(const std::vector<std::string>& arguments) {
    try {
        Caller caller = Caller::ofThisProcess();
        const std::string builtIn = platform::builtInLocalLibraryDirectory();
        const std::string library =
            caller.isElevated() ? builtIn : platform::localLibraryDirectory();
        // Root that names a library for a trial knows where it lies.
        const auto trust = caller.isElevated() || library == builtIn
                               ? GuardedFolder::Trust::roots
                               : GuardedFolder::Trust::anybodys;
        return Installer(InstallerPlaces::of(ownPath(), library), std::move(caller), trust)
            .run(arguments);
    } catch (const InstallFailure& failure) {
        platform::systemLog(platform::LogPriority::error, "%s", failure.what());
        return {.code = failure.code()};
    }
}

bool print(std::string_view text) {
    if (text.empty())
        return false;
    while (!text.empty()) {
        const ssize_t size = ::write(STDOUT_FILENO, text.data(), text.size());
        if (size <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    constexpr int failed = static_cast<int>(InstallCode::internal);
    try {
        prepare();
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        if (!awaitWord())
            return failed;
        const InstallerReply reply = carryOut(arguments);
        return print(reply.propertyList()) ? static_cast<int>(reply.code) : failed;
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "%s", exception.what());
        return failed;
    }
}
