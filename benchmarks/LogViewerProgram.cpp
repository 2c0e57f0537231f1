#include "framework/log/qnlog.h"
#include "framework/logviewer/QNLogTableViewer.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>

// LogViewerProgram LOG: the log viewer and nothing else. It prints "rows N" when all rows of the
// file are known, and then, each second, "longest N": the microseconds of the longest event in it.

namespace {

using Clock = std::chrono::steady_clock;

class Application final : public QApplication {
  public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        const auto start = Clock::now();
        const bool result = QApplication::notify(receiver, event);
        longest_ = std::max(longest_, Clock::now() - start);
        return result;
    }

    void printLongest() {
        const auto time = std::chrono::duration_cast<std::chrono::microseconds>(longest_);
        std::printf("longest %lld\n", static_cast<long long>(time.count()));
        std::fflush(stdout);
        longest_ = {};
    }

  private:
    Clock::duration longest_{};
};

} // namespace

int main(int argc, char** argv) {
    Application application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s LOG\n", argv[0]);
        return 2;
    }
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);
    qnlog_handle* const handle = qnlog_open(argv[1], 0);
    if (handle == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    QNLogTableViewer viewer(handle);
    QTimer printing;
    QObject::connect(&printing, &QTimer::timeout, [&] {
        if (printing.interval() != 1) {
            application.printLongest();
        } else if (viewer.document().isCaughtUp()) {
            std::printf("rows %zu\n", viewer.document().index().size());
            std::fflush(stdout);
            printing.setInterval(std::chrono::seconds(1));
        }
    });
    printing.start(1);
    viewer.showWindow();
    return QApplication::exec();
}
