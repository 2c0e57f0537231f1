#pragma once

#include <exception>
#include <string>

namespace platform {

/// How lower layers report an exception that they caught at the edge of a callback. They do not
/// know the application object, so that installs a hook; until then a report is a line "Exception @
/// PLACE: TEXT" in the system log. After the report, work goes on.
///
/// `place` is a number that identifies the catching place, see ExceptionPlace.
using ExceptionHook = void (*)(unsigned place, const std::exception_ptr& exception) noexcept;

enum ExceptionPlace : unsigned {
    kExceptionInRunLoopSource = 1,
    kExceptionInTimer = 2,
    kExceptionInPostedCall = 3,
    kExceptionInDispatchQueue = 4,
    kExceptionInNotification = 5,
    kExceptionInItemHandler = 6,
    kExceptionInObserver = 7,
    kExceptionInDataCallback = 8,
};

/// Installs `hook` (null: the system log again) and returns the previous one. Any thread.
ExceptionHook replaceExceptionHook(ExceptionHook hook) noexcept;

/// Reports the exception being handled; call it inside a catch block only. Any thread.
void reportCurrentException(unsigned place) noexcept;

/// The text of an exception: what() of a standard exception, else a note that it has none.
std::string describeException(const std::exception_ptr& exception);

/// Runs `work` and reports whatever it throws.
template <typename Work>
void guarded(unsigned place, const Work& work) noexcept {
    try {
        work();
    } catch (...) {
        reportCurrentException(place);
    }
}

} // namespace platform
