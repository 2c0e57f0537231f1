#include "platform/base/CallStack.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <memory>

namespace platform {

namespace {

std::string demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

std::string fileName(const char* path) {
    const std::string text = path ? path : "?";
    return text.substr(text.rfind('/') + 1);
}

std::string describe(const void* address) {
    Dl_info info{};
    if (::dladdr(address, &info) == 0)
        info = {};
    const auto number = reinterpret_cast<std::uintptr_t>(address);
    const bool isNamed = info.dli_sname != nullptr;
    const auto base = reinterpret_cast<std::uintptr_t>(isNamed ? info.dli_saddr : info.dli_fbase);
    return fileName(info.dli_fname) + " " + (isNamed ? demangled(info.dli_sname) : "?") + " + " +
           std::to_string(number - base);
}

} // namespace

[[gnu::noinline]] CallStack CallStack::here() noexcept {
    CallStack stack;
    std::array<void*, std::tuple_size_v<decltype(addresses_)> + 1> found{};
    const int count = ::backtrace(found.data(), static_cast<int>(found.size()));
    if (count > 1) {
        stack.count_ = static_cast<std::size_t>(count) - 1;
        std::copy_n(found.begin() + 1, stack.count_, stack.addresses_.begin());
    }
    return stack;
}

std::string CallStack::description() const {
    std::string text;
    for (std::size_t i = 0; i < count_; ++i)
        text += (i == 0 ? "" : "\n") + std::to_string(i) + " " + describe(addresses_[i]);
    return text;
}

} // namespace platform
