#include "VolumeWindowFixture.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/HighContrastTheme.h"
#include "look/window/MVScroller.h"
#include "ui/items/ItemStatus.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/SliderGeometry.h"

#include <QImage>
#include <QWheelEvent>

#include <algorithm>
#include <optional>
#include <vector>

// Contrasts as they are on the screen, pixel by pixel, in the usual theme and with more contrast.
namespace {

class VolumeWindowLookTest : public VolumeWindowFixture, public testing::WithParamInterface<bool> {
  public:
    ~VolumeWindowLookTest() override { CurrentTheme::shared().setMoreContrast(false); }

  protected:
    VolumeWindowLookTest() {
        CurrentTheme::shared().setMoreContrast(GetParam());
        QList<RunningApplication> programs;
        for (std::uint32_t number = 0; number < 6; ++number)
            programs.push_back(
                {number + 1, QStringLiteral("%1 program").arg(QChar('a' + number)), {}});
        model_.workspace.setRunningApplications(programs);
        window_.resize(450, 4 * ItemLayout::height + static_cast<int>(window_.titleBarHeight()));
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        model_.controller.setMuted(*row('b').item->representedObject(), true);
        row('b').item->handleActivity(50, 0.5F);
        row('c').item->handleActivity(50, 0.5F);
        moveMouseTo(row('d').item->label());
        for (const char each : {'b', 'c'})
            EXPECT_TRUE(support::waitUntil([&] { return startOfTrack(each) != startOfTrack('a'); }))
                << "its level is drawn";
    }

    RowProbe row(char letter) const {
        return {window_, QStringLiteral("%1 program").arg(QLatin1Char(letter))};
    }

    QRgb startOfTrack(char letter) {
        return pictureOf(*row(letter).slider).pixel(20, row(letter).slider->height() / 2);
    }

    QImage pictureOf(QWidget& part) {
        const QRect place(part.mapTo(&window_, QPoint()), part.size());
        return window_.grab(place).toImage();
    }

    /// By way of the title bar: the toolkit drops a move to where the mouse is already.
    void moveMouseTo(QWidget& part) {
        QTest::mouseMove(window_.windowHandle(), QPoint(window_.width() / 2, 10));
        QTest::mouseMove(window_.windowHandle(), part.mapTo(&window_, part.rect().center()));
        QCoreApplication::processEvents();
    }

    /// Of the pixel of `picture` that stands out the most, on each of those in `backgrounds`.
    static double contrastOn(const QImage& backgrounds, const QImage& picture) {
        double most = 0;
        for (const QColor& ink : colorsOf(picture)) {
            double least = 21;
            for (const QColor& each : colorsOf(backgrounds))
                least = std::min(least, HighContrastTheme::contrast(ink, each));
            most = std::max(most, least);
        }
        return most;
    }

    static std::vector<QColor> colorsOf(const QImage& picture) {
        std::vector<QRgb> pixels;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                pixels.push_back(picture.pixel(x, y));
        std::ranges::sort(pixels);
        pixels.erase(std::unique(pixels.begin(), pixels.end()), pixels.end());
        return {pixels.begin(), pixels.end()};
    }

    /// The pixels between the lines of the row, where nothing is drawn on it.
    QImage plainOf(char letter) {
        const QImage whole = pictureOf(*row(letter).item);
        return whole.copy(whole.width() / 2, 10, 24, 10);
    }

    QImage frameOf(char letter) {
        const QImage whole = pictureOf(*row(letter).item);
        return whole.copy(whole.width() / 2, 0, 8, 6);
    }

    QImage statusOf(char letter) { return pictureOf(row(letter).item->status()); }

    /// Without the figures.
    QImage cuesOf(char letter) {
        const QRect percent = row(letter).item->status().percentPlace();
        return statusOf(letter).copy(0, 0, percent.left(), percent.height());
    }
};

} // namespace

TEST_P(VolumeWindowLookTest, FiguresWordAndSignCanBeReadAtRest) {
    const double least = GetParam() ? 7 : 4.5;
    ASSERT_TRUE(support::waitUntil([&] { return contrastOn(plainOf('b'), cuesOf('b')) >= least; }));
    EXPECT_GE(contrastOn(plainOf('a'), statusOf('a')), least) << "figures";
    EXPECT_LT(contrastOn(plainOf('a'), cuesOf('a')), 1.2) << "no cue where nothing plays";
    EXPECT_GE(contrastOn(plainOf('c'), cuesOf('c')), least) << "the sign";
    EXPECT_GT(row('b').item->status().width(), row('c').item->status().width()) << "the word";
    if (GetParam()) {
        for (const char each : {'a', 'b', 'c'})
            EXPECT_GE(contrastOn(plainOf(each), pictureOf(row(each).item->label())), 7) << each;
    }
}

TEST_P(VolumeWindowLookTest, MouseAndFocusShowInTheRowsFrame) {
    const double before = contrastOn(plainOf('a'), statusOf('a'));
    EXPECT_LT(contrastOn(plainOf('a'), frameOf('a')), 1.2);
    moveMouseTo(row('a').item->label());
    EXPECT_GE(contrastOn(plainOf('a'), frameOf('a')), 3);
    EXPECT_GE(contrastOn(plainOf('a'), statusOf('a')), before);
    EXPECT_EQ(contrastOn(plainOf('a'), statusOf('a')) > before, !GetParam()) << "brighter";
    moveMouseTo(row('d').item->label());
    EXPECT_LT(contrastOn(plainOf('a'), frameOf('a')), 1.2);
    row('a').slider->setFocus(Qt::MouseFocusReason);
    EXPECT_GE(contrastOn(plainOf('a'), frameOf('a')), 3);
    EXPECT_NE(frameOf('a'), frameOf('d'));
}

TEST_P(VolumeWindowLookTest, TheFrameFollowsTheMouseWhenTheRowsScroll) {
    moveMouseTo(row('a').item->label());
    const QPoint place = row('a').item->label().mapTo(&window_, QPoint(30, 10));
    QWheelEvent event(place, window_.mapToGlobal(place), {}, {0, -120}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event); // which sendEvent() would undo
    qApp->notify(window_.windowHandle(), &event);
    EXPECT_TRUE(support::waitUntil([&] { return contrastOn(plainOf('b'), frameOf('b')) >= 3; }));
}

TEST_P(VolumeWindowLookTest, KnobSpeakerAndFiguresLightUpBelowTheMouse) {
    row('c').slideTo(50);
    ItemStatus& status = row('c').item->status();
    moveMouseTo(row('c').item->label());
    const QImage slider = pictureOf(*row('c').slider);
    const QImage speaker = pictureOf(*row('c').mute);
    const QImage figures = pictureOf(status);
    moveMouseTo(*row('c').slider);
    EXPECT_NE(pictureOf(*row('c').slider), slider) << "the knob is in its middle";
    moveMouseTo(*row('c').mute);
    EXPECT_EQ(pictureOf(*row('c').slider), slider);
    EXPECT_NE(pictureOf(*row('c').mute), speaker);
    QTest::mouseMove(window_.windowHandle(),
                     status.mapTo(&window_, status.percentPlace().center()));
    QCoreApplication::processEvents();
    EXPECT_EQ(pictureOf(*row('c').mute), speaker);
    EXPECT_NE(pictureOf(status), figures);
}

TEST_P(VolumeWindowLookTest, TheTipOfALevelStandsOutFromBarAndTrack) {
    for (const char each : {'b', 'c'}) {
        const QImage slider = pictureOf(*row(each).slider);
        const SliderGeometry parts = row(each).slider->geometryOfParts();
        const int end = static_cast<int>(parts.knobCenter(1.0) * 0.5);
        const int middle = slider.height() / 2;
        const QImage tip = slider.copy(end - 4, middle, 6, 1);
        EXPECT_GE(contrastOn(slider.copy(end - 24, middle - 3, 12, 7), tip), 3) << "the bar";
        EXPECT_GE(contrastOn(slider.copy(end + 8, middle - 3, 12, 7), tip), 3) << "the track";
    }
}

TEST_P(VolumeWindowLookTest, TheFocusedKnobHasARingWithAnEdge) {
    row('a').slideTo(50);
    row('a').slider->setFocus(Qt::TabFocusReason);
    const QImage slider = pictureOf(*row('a').slider);
    const SliderGeometry parts = row('a').slider->geometryOfParts();
    const int center = static_cast<int>(parts.knobCenter(0.5));
    const int middle = slider.height() / 2;
    const auto at = [&](int distance) { return slider.copy(center - distance, middle, 1, 1); };
    EXPECT_GE(contrastOn(at(13), at(9)), 3) << "the ring on the track";
    EXPECT_GE(contrastOn(at(8), at(9)), 3) << "the ring on its edge";
    EXPECT_GE(contrastOn(at(8), at(2)), 3) << "the knob on that edge";
}

TEST_P(VolumeWindowLookTest, TheScrollersKnobHasAnEdge) {
    const auto bars = window_.findChildren<MVScroller*>();
    const auto bar = std::ranges::find_if(bars, [](const auto* each) { return each->isVisible(); });
    ASSERT_NE(bar, bars.end());
    const QImage picture = pictureOf(**bar);
    const int middle = picture.height() / 3; // within the knob
    const QImage track = picture.copy(0, picture.height() - 12, picture.width(), 4);
    EXPECT_GE(contrastOn(track, picture.copy(0, middle, picture.width(), 1)), 3);
}

TEST_P(VolumeWindowLookTest, NothingIsDrawnWhileNothingChanges) {
    class Drawings final : public QObject {
      public:
        bool eventFilter(QObject* /*watched*/, QEvent* event) override {
            if (event->type() == QEvent::Paint)
                region += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
        QRegion region;
    } drawings;
    const RowProbe shown = row('c');
    moveMouseTo(shown.item->label());
    shown.slider->setFocus(Qt::MouseFocusReason);
    QCoreApplication::processEvents();
    shown.item->installEventFilter(&drawings);
    QCoreApplication::processEvents();
    EXPECT_TRUE(drawings.region.isEmpty());
    shown.item->handleActivity(60, 0.6F);
    ASSERT_TRUE(support::waitUntil([&] { return !drawings.region.isEmpty(); }));
    EXPECT_TRUE(shown.slider->geometry().contains(drawings.region.boundingRect()));
    EXPECT_LT(drawings.region.boundingRect().width(), shown.slider->width() / 2);
}

INSTANTIATE_TEST_SUITE_P(Themes, VolumeWindowLookTest, testing::Bool());
