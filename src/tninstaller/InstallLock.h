#pragma once

#include "tninstaller/GuardedFolder.h"

#include "platform/base/FileDescriptor.h"

/// While it lives, no other tool works in a folder. It is a file that only the folder's owner can
/// open, so that nobody else can hold it; it goes away with the object, and one that a killed tool
/// has left is used again.
class InstallLock {
  public:
    /// Waits for another tool, for a minute at most. `folder` must outlive this. Throws
    /// InstallFailure.
    explicit InstallLock(const GuardedFolder& folder);
    ~InstallLock();
    InstallLock(const InstallLock&) = delete;
    InstallLock& operator=(const InstallLock&) = delete;

  private:
    bool take();

    const GuardedFolder& folder_;
    platform::FileDescriptor file_;
};
