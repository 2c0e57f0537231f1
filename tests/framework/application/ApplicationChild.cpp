// A program started by the tests: application_child WHAT [LOG]. It prints what happens. It has no
// windows, except for "windows".
#include "framework/application/QNApplication.h"
#include "framework/application/QNApplicationMain.h"
#include "framework/application/QNGUIApplication.h"
#include "framework/log/qnlog.h"

#include "platform/bus/NotificationCenter.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/Timer.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

std::string_view what;

void print(const char* text) {
    std::printf("%s\n", text);
    std::fflush(stdout);
}

class Child final : public QNApplication {
  public:
    void applicationWillFinishLaunching() override {
        print(isCurrent() ? "will finish" : "is not the current one");
        observers_[0] = std::make_unique<platform::NotificationObserver>(
            QLatin1String(didFinishLaunching), [this](const QVariant&) { launched(); });
        observers_[1] = std::make_unique<platform::NotificationObserver>(
            QLatin1String(willTerminate), [](const QVariant&) { print("will terminate, posted"); });
        if (what == "throw")
            throw std::runtime_error("a hook");
    }

    void applicationWillTerminate() override {
        print("will terminate");
        terminate(); // does nothing the second time
        if (what == "throw")
            throw std::runtime_error("the last hook");
    }

  private:
    bool isCurrent() const { return current() == this; }

    void launched() {
        print(launchComplete() ? "complete" : "incomplete");
        if (what == "thread") {
            std::thread([this] { terminate(); }).detach();
            return;
        }
        timer_ = std::make_unique<platform::Timer>(*platform::RunLoop::current(),
                                                   [this] { terminate(); });
        timer_->start(std::chrono::milliseconds(1));
    }

    std::unique_ptr<platform::NotificationObserver> observers_[2];
    std::unique_ptr<platform::Timer> timer_;
};

/// Ends with a log whose disk hangs.
class WindowedChild final : public QNGUIApplication {
  public:
    explicit WindowedChild(const char* path) { setLogHandle(qnlog_open(path, 0)); }

    void applicationDidFinishLaunching() override {
        for (int i = 0; i < 10'000; ++i)
            log("more than the FIFO has room for");
        terminate();
    }
};

} // namespace

int main(int argc, char** argv) {
    what = argc > 1 ? argv[1] : "";
    if (what == "no-class") {
        ApplicationClasses::remove("QNGUIApplication");
        return QNApplicationMain(nullptr, argc, argv);
    }
    if (what == "windows") {
        QNGUIApplication::setMainInterface(
            [path = argv[2]] { return std::make_unique<WindowedChild>(path); });
        return QNApplicationMain(nullptr, argc, argv);
    }
    return QNApplicationMain([] { return std::make_unique<Child>(); }, argc, argv);
}
