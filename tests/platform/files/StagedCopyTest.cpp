#include "platform/files/StagedCopy.h"

#include "platform/files/FileMarks.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;
using platform::StagedCopy;

namespace {

class StagedCopyTest : public testing::Test {
  public:
    ~StagedCopyTest() override {
        for (const fs::path& bundle : {source_, place_})
            ::chmod((bundle / "Contents").c_str(), 0755);
    }

  protected:
    StagedCopyTest() {
        fs::create_directories(source_ / "Contents/Linux");
        fs::create_directories(place_.parent_path());
        std::ofstream(source_ / "Contents/Linux/program") << std::string(200000, 'x');
        ::chmod((source_ / "Contents/Linux/program").c_str(), 04755);
        fs::create_symlink("Linux/../nowhere", source_ / "Contents/link");
        ::chmod((source_ / "Contents").c_str(), 0555);
    }

    std::size_t entriesBeside() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(place_.parent_path()), {}));
    }

    int errorOfCopy() const {
        try {
            StagedCopy(source_, place_).takePlace();
            return 0;
        } catch (const fs::filesystem_error& error) {
            return error.code().value();
        }
    }

    const support::PrivateFolder folder_;
    const fs::path source_ = folder_.path() / "from/Tönvale \"1\".app";
    const fs::path place_ = folder_.path() / "to/Tönvale '1'.app";
};

} // namespace

TEST_F(StagedCopyTest, IsTheSameTreeAndAppearsAtOnce) {
    const fs::path program = "Contents/Linux/program";
    ::setxattr((source_ / program).c_str(), "user.com.apple.quarantine", "1", 1, 0);
    {
        StagedCopy copy(source_, place_);
        EXPECT_FALSE(fs::exists(place_));
        copy.takePlace();
    }
    EXPECT_EQ(support::contentOf(place_ / program), support::contentOf(source_ / program));
    EXPECT_EQ(support::modeOf(place_ / program), 0755U) << "without the set-user-ID bit";
    EXPECT_EQ(support::modeOf(place_ / "Contents"), 0555U);
    EXPECT_EQ(fs::read_symlink(place_ / "Contents/link"), "Linux/../nowhere");
    EXPECT_EQ(fs::last_write_time(place_ / program), fs::last_write_time(source_ / program));
    EXPECT_LT(::getxattr((place_ / program).c_str(), "user.com.apple.quarantine", nullptr, 0), 0);
    EXPECT_TRUE(platform::removeAttribute(place_, "user.com.apple.quarantine"));
    EXPECT_EQ(entriesBeside(), 1U);
    EXPECT_EQ(errorOfCopy(), EEXIST) << "nothing is replaced";
}

TEST_F(StagedCopyTest, AFailureLeavesNothing) {
    ASSERT_EQ(::mkfifo((source_ / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOfCopy(), EINVAL);
    fs::remove_all(source_ / "pipe");
    std::ofstream(source_ / "huge") << "";
    if (::truncate((source_ / "huge").c_str(), off_t{1} << 42U) == 0) { // not every disk can
        EXPECT_EQ(errorOfCopy(), ENOSPC);
    }
    EXPECT_EQ(entriesBeside(), 0U);
}

TEST_F(StagedCopyTest, RemovesWhatAKilledRunHasLeftButNotOneAtWork) {
    const std::string start = place_.parent_path() / ("." + place_.filename().string() + ".");
    for (const char* const name : {"killed", "atwork", "x"})
        fs::create_directories(start + name + "/Contents");
    const int atWork = ::open((start + "atwork").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(atWork, LOCK_EX), 0);
    EXPECT_EQ(errorOfCopy(), 0);
    EXPECT_FALSE(fs::exists(start + "killed"));
    EXPECT_TRUE(fs::exists(start + "atwork"));
    EXPECT_TRUE(fs::exists(start + "x")) << "not of a copy";
    ::close(atWork);
}
