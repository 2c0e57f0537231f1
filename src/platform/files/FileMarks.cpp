#include "platform/files/FileMarks.h"

#include "platform/base/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>

namespace platform {

bool isImmutable(const std::filesystem::path& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    int flags = 0;
    return file && ::ioctl(file.get(), FS_IOC_GETFLAGS, &flags) == 0 &&
           (flags & FS_IMMUTABLE_FL) != 0;
}

bool removeAttribute(const std::filesystem::path& path, const std::string& name) {
    return ::lremovexattr(path.c_str(), name.c_str()) == 0 || errno == ENODATA || errno == ENOTSUP;
}

} // namespace platform
