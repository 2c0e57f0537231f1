#include "e2e/DesktopFixture.h"

#include "support/AccessibleObject.h"

#include <QImage>

using support::ChildProcess;
using support::waitUntil;

// The window on Wayland: a compositor that draws into memory and has neither mouse nor keyboard.
namespace {

class WaylandWindowTest : public DesktopFixture {
  protected:
    WaylandWindowTest() {
        EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(socket_); }))
            << compositor_.output();
    }

    void open() {
        // Qt would load Mesa to learn whether it can decorate windows, which leaks.
        startTonvale({{"QT_QPA_PLATFORM", "wayland"},
                      {"QT_WAYLAND_DISABLE_WINDOWDECORATION", "1"},
                      {"WAYLAND_DISPLAY", "tonvale-0"}});
    }

    bool becomes(const QSize& size) const {
        return waitUntil([&] {
            const auto window = tool_.window("Tonvale");
            return window && window->size() == size;
        });
    }

    bool isDrawnWith(const QSize& size) {
        quitTonvale();
        const QImage image(QString::fromStdString(picture_));
        EXPECT_EQ(image.size(), size);
        return !image.isNull() && image.size() == size;
    }

    const support::AssistiveTool tool_{session_};
    const std::filesystem::path socket_ =
        std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / "tonvale-0";
    ChildProcess compositor_{{"weston", "--backend=headless-backend.so", "--socket=tonvale-0",
                              "--no-config", "--idle-time=0"}};
};

} // namespace

TEST_F(WaylandWindowTest, OnlyItsSizeIsRememberedAndIsOfWholeRows) {
    rememberFrame({30, 40, 640, titleBar + 3 * rowHeight + 7});
    open();
    EXPECT_TRUE(becomes({640, titleBar + 3 * rowHeight}));
    EXPECT_TRUE(isDrawnWith({640, titleBar + 3 * rowHeight}));
    EXPECT_EQ(rememberedFrame(), "30 40 640 " + std::to_string(titleBar + 3 * rowHeight))
        << "the place is that of another desktop";
    open();
    EXPECT_TRUE(isDrawnWith({640, titleBar + 3 * rowHeight}));
}
