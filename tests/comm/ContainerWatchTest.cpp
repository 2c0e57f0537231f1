#include "comm/ContainerWatch.h"

#include "ContainersFixture.h"

#include <array>
#include <linux/capability.h>
#include <optional>
#include <sys/syscall.h>
#include <unistd.h>

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

class ContainerWatchTest : public ContainersFixture {
  protected:
    void watch() {
        watch_.emplace(inHome("Library/Containers"), [this] { ++calls_; });
    }

    /// How often the change is told, for which a burst's length must pass.
    int callsAfter(const std::function<void()>& change) {
        const int before = calls_;
        change();
        notice();
        advance(99ms);
        EXPECT_EQ(calls_, before) << "a burst is told at its end";
        advance(1ms);
        const int calls = calls_ - before;
        notice();
        advance(1h);
        EXPECT_EQ(calls_ - before, calls) << "what the watch does itself is no change";
        return calls;
    }

    std::optional<ContainerWatch> watch_;
    int calls_ = 0;
};

/// The calling thread cannot pass over permissions while it lives, not even as the system's user.
class PermissionsCount {
  public:
    PermissionsCount() {
        EXPECT_EQ(::syscall(SYS_capget, &header_, before_.data()), 0);
        auto fewer = before_;
        fewer[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        EXPECT_EQ(::syscall(SYS_capset, &header_, fewer.data()), 0);
    }
    ~PermissionsCount() { ::syscall(SYS_capset, &header_, before_.data()); }
    PermissionsCount(const PermissionsCount&) = delete;
    PermissionsCount& operator=(const PermissionsCount&) = delete;

  private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> before_{};
};

} // namespace

TEST_F(ContainerWatchTest, FollowsTheWayDownAsFoldersAppearAndMakesNone) {
    watch();
    notice();
    advance(1s);
    EXPECT_FALSE(fs::exists(home_));
    for (const char* const step :
         {"", "Library", "Library/Containers", "Library/Containers/a", "Library/Containers/a/Data"})
        EXPECT_EQ(callsAfter([&] { fs::create_directory(inHome(step)); }), 1) << step;
    EXPECT_EQ(callsAfter([&] { std::ofstream(container("a/Data/file")) << "x"; }), 0);
}

TEST_F(ContainerWatchTest, FollowsFoldersThatAppearFasterThanTheyAreWatched) {
    makeFolders(home_);
    watch();
    EXPECT_EQ(callsAfter([&] { makeFolders(container("a")); }), 1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("b")); }), 1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("a/Data")); }), 1);
}

TEST_F(ContainerWatchTest, TellsOfContainersThatBecomeCompleteOrStopToBe) {
    makeFolders(container("old/Data"));
    makeFolders(container("incomplete"));
    fs::create_directory_symlink("nowhere", container("dangling"));
    std::ofstream(container("file")) << "x";
    watch();
    EXPECT_EQ(callsAfter([&] { makeFolders(container("incomplete/Data")); }), 1);
    EXPECT_EQ(callsAfter([&] { fs::remove(container("old/Data")); }), 1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("old/Data")); }), 1);
    EXPECT_EQ(callsAfter([&] { fs::remove_all(container("old")); }), 1);
    EXPECT_EQ(callsAfter([&] { fs::remove(container("file")); }), 1);
}

TEST_F(ContainerWatchTest, TellsABurstOnceAndStillWatchesAllOfIt) {
    makeFolders(container(""));
    watch();
    constexpr int many = 500;
    EXPECT_EQ(callsAfter([&] {
                  for (int i = 0; i < many; ++i)
                      makeFolders(container(std::to_string(i)));
              }),
              1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("0/Data")); }), 1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("499/Data")); }), 1);
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ContainerWatchTest, ContinuousChangesAreReportedEveryTenthOfASecond) {
    makeFolders(container(""));
    watch();
    for (int i = 1; i <= 10; ++i) {
        makeFolders(container(std::to_string(i)));
        notice();
        advance(50ms);
        EXPECT_EQ(calls_, i / 2);
    }
}

TEST_F(ContainerWatchTest, WatchesWhatStandsAtThePathWhenAFolderIsReplacedOrRemoved) {
    makeFolders(container("a"));
    watch();
    EXPECT_EQ(callsAfter([&] {
                  fs::rename(inHome("Library"), inHome("Moved"));
                  makeFolders(container("a"));
              }),
              1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("a/Data")); }), 1);
    EXPECT_EQ(callsAfter([&] { makeFolders(inHome("Moved/Containers/b")); }), 0);

    EXPECT_EQ(callsAfter([&] {
                  fs::remove_all(container("a"));
                  makeFolders(container("a"));
              }),
              1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("a/Data")); }), 1);

    EXPECT_EQ(callsAfter([&] { fs::remove_all(inHome("Library")); }), 1);
    EXPECT_EQ(callsAfter([&] { std::ofstream(inHome("Library")) << "in the way"; }), 1);
    EXPECT_EQ(callsAfter([&] {
                  fs::remove(inHome("Library"));
                  makeFolders(container(""));
              }),
              1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("a")); }), 1);
}

TEST_F(ContainerWatchTest, AContainerThatCannotBeWatchedIsTriedAfterTheNextChangeElsewhere) {
    makeFolders(container("locked"));
    fs::permissions(container("locked"), fs::perms::owner_write | fs::perms::owner_exec);
    const PermissionsCount permissionsCount;
    watch();
    EXPECT_EQ(callsAfter([] {}), 0) << "nothing has changed";
    fs::permissions(container("locked"), fs::perms::owner_all);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("locked/unseen")); }), 0);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("other")); }), 1);
    EXPECT_EQ(callsAfter([&] { makeFolders(container("locked/Data")); }), 1);
}

TEST_F(ContainerWatchTest, IsSilentAfterItsDestruction) {
    makeFolders(container(""));
    watch();
    makeFolders(container("a"));
    notice(); // a burst has begun
    makeFolders(container("b"));
    watch_.reset();
    notice();
    advance(1s);
    EXPECT_EQ(calls_, 0);
}
