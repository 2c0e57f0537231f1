#pragma once

#include <utility>

/// Where a change of a volume comes from. Set for the duration of an operation by an object on its
/// stack; nobody needs to pass it on. Main thread only.
class ChangeSource {
  public:
    enum class Kind {
        window, ///< anything in the window but keys; holds where nothing else is said
        key,
        bus,
        tray,
        elsewhere, ///< another mixer, or the program itself
    };

    explicit ChangeSource(Kind kind) noexcept : before_(std::exchange(current_, kind)) {}
    ~ChangeSource() { current_ = before_; }
    ChangeSource(const ChangeSource&) = delete;
    ChangeSource& operator=(const ChangeSource&) = delete;

    static Kind current() noexcept { return current_; }

  private:
    static inline Kind current_ = Kind::window;

    const Kind before_;
};
