#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

/// While it lives, the program's windows that were visible when it was made take no input. They
/// still paint. Main thread only.
class WindowsWithoutInput {
  public:
    WindowsWithoutInput();
    ~WindowsWithoutInput();
    WindowsWithoutInput(const WindowsWithoutInput&) = delete;
    WindowsWithoutInput& operator=(const WindowsWithoutInput&) = delete;

  private:
    QList<QPointer<QWidget>> windows_;
};
