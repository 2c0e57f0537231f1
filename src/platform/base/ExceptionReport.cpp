#include "platform/base/ExceptionReport.h"

#include "platform/base/SystemLog.h"

#include <atomic>

namespace platform {

namespace {

void reportToSystemLog(unsigned place, const std::exception_ptr& exception) noexcept {
    try {
        systemLog(LogPriority::error, "Exception @ %u: %s", place,
                  describeException(exception).c_str());
    } catch (...) {
        systemLog(LogPriority::error, "Exception @ %u", place);
    }
}

std::atomic<ExceptionHook> currentHook{&reportToSystemLog};

} // namespace

ExceptionHook replaceExceptionHook(ExceptionHook hook) noexcept {
    return currentHook.exchange(hook != nullptr ? hook : &reportToSystemLog);
}

void reportCurrentException(unsigned place) noexcept {
    currentHook.load()(place, std::current_exception());
}

std::string describeException(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an object that is not a std::exception";
    }
}

} // namespace platform
