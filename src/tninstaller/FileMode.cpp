#include "tninstaller/FileMode.h"

#include <initializer_list>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

bool setOwnMode(int descriptor, mode_t mode) noexcept {
    for (const char* const list : {"system.posix_acl_access", "system.posix_acl_default"})
        ::fremovexattr(descriptor, list); // most have none
    return ::fchown(descriptor, ::geteuid(), ::getegid()) == 0 && ::fchmod(descriptor, mode) == 0;
}
