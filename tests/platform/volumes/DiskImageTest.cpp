#include "platform/volumes/DiskImage.h"

#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

/// The kernel's tables, as files of our own.
class DiskImageTest : public testing::Test {
  protected:
    DiskImageTest() {
        std::ofstream(folder_.path() / "mountinfo")
            << "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
               "30 22 8:2 / /media/ann rw shared:2 master:1 - ext4 /dev/sda2 rw\n"
               "no mount at all\n"
               "41 22 7:0 / /media/ann/Tonvale\\0401.0\\134 ro,nosuid - iso9660 /dev/loop0 ro\n"
               "42 22 259:3 / /media/ann/part ro - ext4 /dev/loop1p1 ro\n"
               "43 22 7:2 / /mnt/detached ro - squashfs /dev/loop2 ro\n"
               "44 22 0:50 / /mnt/net ro - nfs4 server:/x ro\n"
               "45 22 8:3 / /mnt/over rw - ext4 /dev/sda3 rw\n"
               "46 45 7:0 / /mnt/over ro - iso9660 /dev/loop0 ro\n";
        device("7:0", "loop0", "/home/ann/Downloads/Tönvale \"1\".iso");
        device("7:1", "loop1", "/tmp/disk.img");
        device("7:2", "loop2", "");
        fs::create_directories(sysfs_ / "devices/loop1/loop1p1");
        fs::create_symlink("../../devices/loop1/loop1p1", sysfs_ / "dev/block/259:3");
        device("8:1", "sda1", "");
        device("8:2", "sda2", "");
    }

    void device(const std::string& number, const std::string& name, const std::string& file) const {
        const fs::path folder = sysfs_ / "devices" / name;
        fs::create_directories(folder);
        fs::create_directories(sysfs_ / "dev/block");
        fs::create_symlink(folder, sysfs_ / "dev/block" / number);
        if (file.empty())
            return;
        fs::create_directories(folder / "loop");
        std::ofstream(folder / "loop/backing_file") << file << '\n';
    }

    std::string imageFor(const std::string& volume) const {
        return platform::diskImagePathForVolumePath(volume, table(), sysfs_).value_or("none");
    }
    platform::MountTable table() const {
        return platform::MountTable(folder_.path() / "mountinfo");
    }

    const support::PrivateFolder folder_;
    const fs::path sysfs_ = folder_.path() / "sys";
};

} // namespace

TEST_F(DiskImageTest, FindsTheImageBehindALoopDeviceAndNothingElse) {
    const std::string image = "/home/ann/Downloads/Tönvale \"1\".iso";
    struct Case {
        const char* volume;
        std::string image;
    };
    for (const Case& each :
         {Case{"/media/ann/Tonvale 1.0\\", image}, Case{"/media/ann/Tonvale 1.0\\ more", image},
          Case{"/media/ann/Tonvale 1.0", "none"}, Case{"/media/ann/part", "/tmp/disk.img"},
          Case{"/mnt/detached", "none"}, Case{"/mnt/net", "none"}, Case{"/media/ann", "none"},
          Case{"/", "none"}, Case{"", "none"}, Case{"/mnt/over", image}})
        EXPECT_EQ(imageFor(each.volume), each.image) << each.volume;
}

TEST_F(DiskImageTest, KnowsTheDevicesOfTheImageAtAPlace) {
    const auto whole = platform::diskImageAt("/media/ann/Tonvale 1.0\\", table(), sysfs_);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->device + ' ' + whole->volume, "loop0 loop0");
    const auto part = platform::diskImageAt("/media/ann/part", table(), sysfs_);
    ASSERT_TRUE(part);
    EXPECT_EQ(part->device + ' ' + part->volume, "loop1 loop1p1");
    EXPECT_TRUE(platform::diskImageAt("/mnt/over", table(), sysfs_)) << "what is mounted last";
    for (const char* const other : {"/media/ann/Tonvale 1.0\\ more", "/mnt/net", "/"})
        EXPECT_FALSE(platform::diskImageAt(other, table(), sysfs_)) << other;
}

TEST(MountTable, TellsWhatIsLocalAndWhatAFileLiesOn) {
    for (const char* const local : {"iso9660", "squashfs", "ext4", "udf", "fuseblk"})
        EXPECT_TRUE(platform::isLocalFileSystem(local)) << local;
    for (const char* const far : {"nfs", "nfs4", "cifs", "9p", "fuse.sshfs", "fuse"})
        EXPECT_FALSE(platform::isLocalFileSystem(far)) << far;
    EXPECT_EQ(platform::volumePathFor("/proc/self/status"), "/proc");
    EXPECT_EQ(platform::volumePathFor("/nowhere"), "");
    EXPECT_FALSE(platform::isOnReadOnlyLocalVolume("/proc"));
}
