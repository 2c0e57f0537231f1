#pragma once

#include "platform/base/FileDescriptor.h"

#include <cstdint>
#include <filesystem>

namespace platform {

/// A copy of a folder that takes its place whole or not at all: made in a hidden folder beside the
/// place, written to the disk, then renamed. Links stay links, files and folders keep their
/// permissions, without set-user-ID bits; anything else in the source ends the copy. What a killed
/// run has left is removed by the next copy to that place.
///
/// Failures are std::filesystem::filesystem_error with the path and the system's error; the place
/// is unchanged then. Blocks while it copies; one thread at a time.
class StagedCopy {
  public:
    /// Copies `source`, a folder, for `place`, whose parent exists. Asks for the free space first.
    StagedCopy(const std::filesystem::path& source, std::filesystem::path place);

    /// Removes what has not taken its place.
    ~StagedCopy();
    StagedCopy(const StagedCopy&) = delete;
    StagedCopy& operator=(const StagedCopy&) = delete;

    /// Puts the copy into its place, where nothing may be.
    void takePlace();

  private:
    const std::filesystem::path place_;
    std::filesystem::path folder_; // the hidden one
    FileDescriptor lock_;          // tells the next run that this one is at work
};

/// The room that a folder and all in it takes, in bytes, as far as it can be read.
[[nodiscard]] std::uintmax_t sizeOnDisk(const std::filesystem::path& folder);

} // namespace platform
