#include "tninstaller/Caller.h"

#include "tninstaller/InstallFailure.h"

#include <charconv>
#include <cstdlib>
#include <grp.h>
#include <optional>
#include <pwd.h>
#include <string_view>
#include <sys/auxv.h>
#include <unistd.h>
#include <utility>

namespace {

std::optional<uid_t> userIn(const char* variable) {
    const char* const value = std::getenv(variable);
    if (value == nullptr)
        return std::nullopt;
    const std::string_view text(value);
    uid_t uid = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), uid);
    if (error != std::errc() || end != text.data() + text.size())
        throw InstallFailure(InstallCode::unsafePlace,
                             std::string(variable) + " is no user's number");
    return uid;
}

std::vector<gid_t> groupsOfThisProcess() {
    const int count = ::getgroups(0, nullptr);
    std::vector<gid_t> groups(static_cast<std::size_t>(count > 0 ? count : 0));
    if (::getgroups(count, groups.data()) < 0)
        groups.clear();
    return groups;
}

Caller callerNumbered(uid_t uid) {
    const passwd* const entry = ::getpwuid(uid);
    if (entry == nullptr)
        throw InstallFailure(InstallCode::unsafePlace,
                             "There is no user with the number " + std::to_string(uid));
    constexpr std::size_t most = 65536; // the kernel's limit
    std::vector<gid_t> groups(most);
    int count = static_cast<int>(most);
    if (::getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count) < 0)
        count = 0;
    groups.resize(static_cast<std::size_t>(count));
    return {uid, entry->pw_gid, std::move(groups), true};
}

void expect(int result) noexcept {
    if (result != 0)
        std::abort(); // to go on with another identity than the one meant is worse
}

} // namespace

Caller Caller::ofThisProcess() {
    if (::getauxval(AT_SECURE) != 0)
        throw InstallFailure(InstallCode::unsafePlace, "Installed with rights of its own: refused");
    auto uid = userIn("PKEXEC_UID");
    const bool isByPkexec = uid.has_value();
    // Who is not root gains nothing by a variable, so that it may say what it likes.
    if (!uid && ::getuid() == 0)
        uid = userIn("SUDO_UID");
    if (uid && ::getuid() == 0)
        return callerNumbered(*uid);
    return {::getuid(), ::getgid(), groupsOfThisProcess(), isByPkexec};
}

Caller::Caller(uid_t uid, gid_t gid, std::vector<gid_t> groups, bool isElevated)
    : uid_(uid), gid_(gid), groups_(std::move(groups)), isElevated_(isElevated) {}

Caller::Identity::Identity(const Caller& caller) : isNeeded_(caller.uid_ != ::geteuid()) {
    if (!isNeeded_)
        return;
    ownGroups_ = groupsOfThisProcess();
    expect(::setgroups(caller.groups_.size(), caller.groups_.data()));
    expect(::setegid(caller.gid_));
    expect(::seteuid(caller.uid_));
}

Caller::Identity::~Identity() {
    if (!isNeeded_)
        return;
    uid_t real = 0;
    uid_t effective = 0;
    uid_t saved = 0;
    gid_t realGroup = 0;
    gid_t effectiveGroup = 0;
    gid_t savedGroup = 0;
    expect(::getresuid(&real, &effective, &saved));
    expect(::getresgid(&realGroup, &effectiveGroup, &savedGroup));
    expect(::seteuid(saved));
    expect(::setegid(savedGroup));
    expect(::setgroups(ownGroups_.size(), ownGroups_.data()));
}
