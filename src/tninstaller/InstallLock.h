#pragma once

#include "tninstaller/GuardedFolder.h"

#include "platform/base/FileDescriptor.h"

#include <chrono>

/// While it lives, no other tool of this user changes what is installed in a folder. It is a file
/// that only its owner can open, so that nobody else can hold it; it goes away with the object, and
/// one that a killed tool has left is used again. Where others may write the folder, a file of
/// theirs that has its name does not count: then there is no lock, and the steps that it protects,
/// each of which is one call, stand for themselves.
class InstallLock {
  public:
    static constexpr std::chrono::milliseconds usualPatience = std::chrono::minutes(1);

    /// Waits for another tool, for `patience` at most. `folder` must outlive this. Throws
    /// InstallFailure: internal if the other one is not ready by then.
    explicit InstallLock(const GuardedFolder& folder,
                         std::chrono::milliseconds patience = usualPatience);
    ~InstallLock();
    InstallLock(const InstallLock&) = delete;
    InstallLock& operator=(const InstallLock&) = delete;

  private:
    enum class Outcome { taken, busy, foreign };
    Outcome take();

    const GuardedFolder& folder_;
    platform::FileDescriptor file_;
};
