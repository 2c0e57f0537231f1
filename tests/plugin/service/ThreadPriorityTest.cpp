#include "plugin/service/ThreadPriority.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <QObject>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

/// What RealtimeKit is asked for.
class RealtimeKit : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.RealtimeKit1")

  public:
    qulonglong askedFor = 0;
    int level = 0;

  public Q_SLOTS:
    void MakeThreadHighPriority(qulonglong thread, int nice) {
        askedFor = thread;
        level = nice;
    }
};

/// Takes from the calling thread the right to prefer itself.
void giveUpRights() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    ::syscall(SYS_capset, &header, none);
    const rlimit limit{0, 0};
    ::setrlimit(RLIMIT_NICE, &limit);
}

} // namespace

TEST(ThreadPriority, RealtimeKitIsAskedForItWhereTheSystemLetsUsNot) {
    const support::PrivateBus bus;
    support::BusConnection service(bus.address());
    const support::BusConnection client(bus.address());
    RealtimeKit kit;
    ASSERT_TRUE(service->registerObject("/org/freedesktop/RealtimeKit1", &kit,
                                        QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(service->registerService("org.freedesktop.RealtimeKit1"));
    qulonglong thread = 0;
    std::thread([&] {
        thread = static_cast<qulonglong>(::gettid());
        const auto level = [&] { return ::getpriority(PRIO_PROCESS, static_cast<id_t>(thread)); };
        const int before = level();
        giveUpRights();
        raiseThreadPriority(*client);
        EXPECT_EQ(level(), before);
    }).join();
    EXPECT_TRUE(support::waitUntil([&] { return kit.askedFor == thread; }));
    EXPECT_EQ(kit.level, kSoundNiceLevel);
}

#include "ThreadPriorityTest.moc"
