#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

/// The user who runs the tool: by pkexec or sudo, which leave the number of the user in PKEXEC_UID
/// and SUDO_UID, or directly. Root that has become root in another way is a user like any other.
/// Immutable.
class Caller {
  public:
    /// That of this process. Throws InstallFailure when pkexec or sudo names a user that does not
    /// exist, and for a tool that was given rights of its own.
    static Caller ofThisProcess();

    Caller(uid_t uid, gid_t gid, std::vector<gid_t> groups, bool isElevated);

    [[nodiscard]] uid_t uid() const noexcept { return uid_; }

    /// Whether the tool has rights that the user does not have. Then nothing that the user can
    /// change decides what is done.
    [[nodiscard]] bool isElevated() const noexcept { return isElevated_; }

    /// While it lives, this process does everything with the user's identity. Not to be nested. A
    /// process that cannot change its identity back ends.
    class Identity {
      public:
        explicit Identity(const Caller& caller);
        ~Identity();
        Identity(const Identity&) = delete;
        Identity& operator=(const Identity&) = delete;

      private:
        const bool isNeeded_;
        std::vector<gid_t> ownGroups_;
    };

  private:
    uid_t uid_;
    gid_t gid_;
    std::vector<gid_t> groups_;
    bool isElevated_;
};
