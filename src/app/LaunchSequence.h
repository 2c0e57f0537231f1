#pragma once

#include <functional>

/// The launch of the program, step by step. No step begins once the program has been told to end,
/// which an alert or a wait in one of them lets happen. An exception in a step is logged, and the
/// next one begins. Main thread only.
class LaunchSequence {
  public:
    /// Called with the name of each step that is over, or has thrown.
    using Observer = std::function<void(const char* step)>;

    explicit LaunchSequence(std::function<bool()> isEnding);

    /// Runs one step.
    void run(const char* step, const std::function<void()>& work) const;

    /// For tests; null: nobody is told.
    static void observe(Observer observer);

  private:
    const std::function<bool()> isEnding_;
};
