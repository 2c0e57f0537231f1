#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ListeningApplication.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <map>

// The application without a window as a program of its own, which a test can stop and kill. Prints
// "NAME PID" when a program has checked in, and then each time that levels of it have arrived.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    support::ListeningApplication listening;
    std::map<std::uint32_t, std::size_t> told;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        for (const auto& program : listening.programs()) {
            const std::size_t now = listening.levelsOf(program.pid).size();
            const auto [before, isNew] = told.try_emplace(program.pid, now);
            if (!isNew && std::exchange(before->second, now) == now)
                continue;
            std::printf("%s %u\n", qUtf8Printable(program.name), program.pid);
            std::fflush(stdout);
        }
    });
    timer.start(20);
    return QCoreApplication::exec();
}
