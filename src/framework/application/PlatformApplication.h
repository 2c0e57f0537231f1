#pragma once

#include <functional>
#include <memory>

class QNGUIApplication;

/// The windowed side of a program: owns the toolkit's application object and runs its event loop
/// until somebody quits.
class PlatformApplication {
  public:
    /// Makes the program's interface once the toolkit is up, and answers the object that becomes
    /// its delegate; null ends the program with status 0, as when another instance has the word.
    using Interface = std::function<std::unique_ptr<QNGUIApplication>()>;

    /// Answers the exit status. What event handlers throw is logged, and the loop goes on.
    static int main(int argc, char** argv, const Interface& makeInterface);
};
