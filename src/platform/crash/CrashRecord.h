#pragma once

#include "platform/base/FileDescriptor.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform {

/// The program that may die, as its report names it.
struct CrashProgram {
    std::string name;
    std::string version;
    std::string build;
};

/// The first line of a record. Lines "KEY VALUE" follow, as docs/crashes.md lists them.
inline constexpr std::string_view crashRecordTitle = "Tonvale crash record 1";
/// The last line of a record that is whole.
inline constexpr std::string_view crashRecordEnd = "end";

/// The file into which a program writes what is left of it when it dies: made, and filled with what
/// is known already, while the program is well.
class CrashRecord {
  public:
    /// Throws std::system_error if it cannot be made.
    CrashRecord(const std::string& folder, const CrashProgram& program);

    /// Takes the room on the disk for the rest, which may have to wait for the disk. False, with
    /// errno set, if there is none.
    [[nodiscard]] bool reserve() const noexcept;

    /// Whether the descriptor is still that of the file, whatever the program has closed since.
    /// This and the next three may be called in a signal handler.
    [[nodiscard]] bool isIntact() const noexcept;
    [[nodiscard]] int descriptor() const noexcept { return file_.get(); }

    /// Gives the file the name by which records are found.
    void publish() const noexcept;

    /// Removes the file, unless it has been published.
    void discard() const noexcept;

  private:
    void open();
    void writeBegin(const CrashProgram& program) const;

    const std::string path_; // of the folder
    const std::string prepared_;
    const std::string published_;
    FileDescriptor folder_;
    FileDescriptor file_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace platform
