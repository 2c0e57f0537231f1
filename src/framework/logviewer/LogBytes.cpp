#include "framework/logviewer/LogBytes.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QN::logviewer {

namespace {

struct stat statusOf(int descriptor) noexcept {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        return {};
    return status;
}

} // namespace

std::shared_ptr<const LogBytes> LogBytes::open(const std::string& path) {
    platform::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
        return nullptr;
    if (!S_ISREG(statusOf(file.get()).st_mode)) {
        errno = EINVAL;
        return nullptr;
    }
    return std::shared_ptr<const LogBytes>(new LogBytes(std::move(file)));
}

std::size_t LogBytes::read(std::uint64_t offset, std::span<char> bytes) const noexcept {
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t got = ::pread(file_.get(), bytes.data() + size, bytes.size() - size,
                                    static_cast<off_t>(offset + size));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    return size;
}

std::string LogBytes::text(std::uint64_t offset, std::size_t size) const {
    std::string text(size, '\0');
    text.resize(read(offset, text));
    return text;
}

std::uint64_t LogBytes::size() const noexcept {
    return static_cast<std::uint64_t>(statusOf(file_.get()).st_size);
}

std::uint64_t LogBytes::dataAfter(std::uint64_t offset) const noexcept {
    const off_t data = ::lseek(file_.get(), static_cast<off_t>(offset), SEEK_DATA);
    return data < 0 ? offset : static_cast<std::uint64_t>(data);
}

bool LogBytes::isAt(const std::string& path) const noexcept {
    struct stat there {};
    const struct stat here = statusOf(file_.get());
    return ::stat(path.c_str(), &there) == 0 && there.st_dev == here.st_dev &&
           there.st_ino == here.st_ino;
}

bool LogBytes::isDeleted() const noexcept {
    return statusOf(file_.get()).st_nlink == 0;
}

} // namespace QN::logviewer
