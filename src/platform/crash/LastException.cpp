#include "platform/crash/LastException.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <typeinfo>

namespace platform {

namespace {

template <std::size_t size>
class KeptText {
  public:
    void keep(std::string_view text) noexcept {
        length_.store(text.copy(characters_.data(), size), std::memory_order_release);
    }
    std::string_view get() const noexcept {
        return {characters_.data(), length_.load(std::memory_order_acquire)};
    }

  private:
    std::array<char, size> characters_{};
    std::atomic<std::size_t> length_{0};
};

KeptText<400> exceptionType;
KeptText<1000> exceptionText;
std::atomic<std::terminate_handler> earlierHandler{nullptr};
std::atomic_flag isTerminating;

void keepText() noexcept {
    try {
        throw; // allocates nothing
    } catch (const std::exception& exception) {
        exceptionText.keep(exception.what());
    } catch (const char* text) {
        exceptionText.keep(text != nullptr ? text : "(null)");
    } catch (...) { // has no text
    }
}

[[noreturn]] void terminated() {
    if (!isTerminating.test_and_set()) {
        if (const std::type_info* const type = abi::__cxa_current_exception_type()) {
            exceptionType.keep(type->name());
            keepText();
        }
    }
    if (const std::terminate_handler earlier = earlierHandler.load())
        earlier();
    std::abort();
}

} // namespace

void keepLastException() noexcept {
    earlierHandler.store(std::set_terminate(&terminated));
}

std::string_view lastExceptionType() noexcept {
    return exceptionType.get();
}

std::string_view lastExceptionText() noexcept {
    return exceptionText.get();
}

} // namespace platform
