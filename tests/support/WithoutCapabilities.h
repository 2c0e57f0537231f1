#pragma once

#include <functional>
#include <linux/capability.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace support {

/// Runs `work`, which must not throw, on a thread without root's rights, so that permissions count
/// whoever runs the test. (Each thread has rights of its own.)
inline void withoutCapabilities(const std::function<void()>& work) {
    bool isWithout = false;
    std::thread([&] {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        const __user_cap_data_struct none[2]{};
        isWithout = ::syscall(SYS_capset, &header, none) == 0;
        if (isWithout)
            work();
    }).join();
    if (!isWithout)
        throw std::runtime_error("capabilities cannot be dropped");
}

} // namespace support
