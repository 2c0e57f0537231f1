#include "framework/log/LogFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace QN::log {

namespace {

constexpr mode_t mode = 0644;

/// A set-user-ID program leaves its user a file that the user may read and delete.
void giveToRealUser(int descriptor) noexcept {
    if (::geteuid() == 0 && ::getuid() != 0 && ::fchown(descriptor, ::getuid(), ::getgid()) != 0)
        std::printf("%s: Can't chown file\n", "qnlog_open");
}

} // namespace

LogFile::LogFile(platform::FileDescriptor file, WriteCall writeCall) noexcept
    : file_(std::move(file)), write_(writeCall) {}

platform::FileDescriptor LogFile::open(const std::string& path) {
    // Non-blocking: the file may be a FIFO without a reader.
    platform::FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode));
    if (!file)
        return file;
    ::fcntl(file.get(), F_SETFL, ::fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
    // The nearest to a file outside the cache that costs no writer anything: a hint that nobody
    // reads it again, which kernels before 6.3 take no notice of.
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_NOREUSE);
    giveToRealUser(file.get());
    ::lseek(file.get(), 0, SEEK_END);
    return file;
}

bool LogFile::endsWithinLine(const std::string& path) noexcept {
    const platform::FileDescriptor file(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    char last = '\n';
    return file && ::lseek(file.get(), -1, SEEK_END) >= 0 && ::read(file.get(), &last, 1) == 1 &&
           last != '\n';
}

bool LogFile::write(std::string_view bytes) noexcept {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t now = write_(file_.get(), bytes.data() + written, bytes.size() - written);
        if (now > 0) {
            written += static_cast<std::size_t>(now);
        } else if (now == 0 || errno != EINTR) {
            cutOff(written);
            return false;
        }
    }
    return true;
}

void LogFile::cutOff(std::size_t written) noexcept {
    if (written == 0)
        return;
    const off_t begin = ::lseek(file_.get(), 0, SEEK_CUR) - static_cast<off_t>(written);
    if (begin >= 0 && ::ftruncate(file_.get(), begin) == 0)
        ::lseek(file_.get(), begin, SEEK_SET);
}

} // namespace QN::log
