#pragma once

#include <functional>
#include <memory>

class QNGUIApplication;

/// The windowed side of a program: owns the toolkit's application object and runs its event loop
/// until somebody quits.
class PlatformApplication {
  public:
    /// Creates the program's interface once the toolkit is initialised, and returns the object that
    /// becomes its delegate; null ends the program with status 0, for example because another
    /// instance is running.
    using Interface = std::function<std::unique_ptr<QNGUIApplication>()>;

    /// Returns the exit status. Exceptions of event handlers are logged, and the loop goes on.
    static int main(int argc, char** argv, const Interface& makeInterface);
};
