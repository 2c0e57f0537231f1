#include "platform/loop/ThreadPriority.h"

#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
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
    const auto connectTo = [&bus](const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()),
                                             QString::fromLatin1(name));
    };
    QDBusConnection service = connectTo("kit");
    const QDBusConnection client = connectTo("asking");
    RealtimeKit kit;
    ASSERT_TRUE(service.registerObject(QStringLiteral("/org/freedesktop/RealtimeKit1"), &kit,
                                       QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(service.registerService(QStringLiteral("org.freedesktop.RealtimeKit1")));
    qulonglong thread = 0;
    std::thread([&] {
        thread = static_cast<qulonglong>(::gettid());
        giveUpRights();
        platform::preferThisThread(client);
        EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(::gettid())), 0);
    }).join();
    EXPECT_TRUE(support::waitUntil([&] { return kit.askedFor == thread; }));
    EXPECT_EQ(kit.level, platform::kSoundNiceLevel);
    for (const char* const name : {"kit", "asking"})
        QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
}

#include "ThreadPriorityTest.moc"
