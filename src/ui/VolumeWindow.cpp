#include "ui/VolumeWindow.h"

#include "comm/MVCommAppValue.h"
#include "ui/AppVolumeController.h"
#include "ui/OneLineText.h"
#include "ui/VolumeNumbers.h"
#include "ui/WindowSize.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QScreen>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr int rowHeight = 44;
constexpr int iconSize = 32;
constexpr int margin = 9;
constexpr QSize usualSize(640, 320);
constexpr qsizetype longestText = 500;
constexpr std::chrono::milliseconds restOfResizing{100};

/// What a stranger chose, for the eye.
QString shownText(const QString& text) {
    return oneLineText(text.left(longestText));
}

QString nameOf(const MVCommAppValue& app) {
    QString name = shownText(app.displayName());
    return isInvisible(name) ? VolumeWindow::tr("Process %1").arg(app.pid()) : name;
}

QString tipText(const QString& text) {
    return text.isEmpty() ? QString()
                          : QStringLiteral("<p>%1</p>").arg(shownText(text).toHtmlEscaped());
}

} // namespace

class VolumeWindow::Row final : public QWidget {
  public:
    Row(AppVolumeController& controller, MVCommAppValue& app)
        : app_(&app)
        , controller_(controller)
        , slider_(new QSlider(Qt::Horizontal))
        , level_(new QProgressBar)
        , mute_(new QCheckBox(VolumeWindow::tr("Mute"))) {
        auto* const icon = new QLabel;
        icon->setPixmap(app.icon().pixmap(iconSize));
        auto* const name = new QLabel(nameOf(app));
        name->setObjectName(QStringLiteral("name"));
        name->setTextFormat(Qt::PlainText); // it is somebody else's text
        name->setToolTip(tipText(name->text()) + tipText(app.path()));
        name->setFixedWidth(180);
        setFixedHeight(rowHeight);
        auto* const layout = new QHBoxLayout(this);
        for (QWidget* const part :
             std::initializer_list<QWidget*>{icon, name, slider_, level_, mute_})
            layout->addWidget(part);
        slider_->setRange(0, VolumeNumbers::full);
        slider_->setAccessibleName(VolumeWindow::tr("Volume"));
        level_->setTextVisible(false);
        connect(slider_, &QSlider::valueChanged, this,
                [this](int percent) { controller_.setPercent(*app_, percent); });
        connect(slider_, &QSlider::sliderReleased, this, [this] {
            const float fraction = VolumeNumbers::fractionForPercent(slider_->value());
            controller_.sliderReleased(*app_, static_cast<double>(fraction));
        });
        connect(mute_, &QCheckBox::toggled, this,
                [this](bool muted) { controller_.setMuted(*app_, muted); });
        connect(&app, &MVCommAppValue::activityChanged, level_,
                [this](qint64 activity) { level_->setValue(static_cast<int>(activity)); });
    }

    /// Null when the record has gone; another one may be at its place.
    const MVCommAppValue* app() const noexcept { return app_; }

    void refresh() {
        const QSignalBlocker sliderBlocker(slider_);
        const QSignalBlocker muteBlocker(mute_);
        if (!slider_->isSliderDown())
            slider_->setValue(controller_.percentOf(*app_));
        mute_->setChecked(app_->muted());
        const QString reason = controller_.reasonNotControllable(*app_);
        slider_->setEnabled(reason.isEmpty());
        slider_->setToolTip(tipText(reason));
    }

    void setActivity(qint64 level100) { app_->setActivity(level100); }

  private:
    const QPointer<MVCommAppValue> app_;
    AppVolumeController& controller_;
    QSlider* slider_;
    QProgressBar* level_;
    QCheckBox* mute_;
};

VolumeWindow::VolumeWindow(AppVolumeController& controller)
    : controller_(controller)
    , notice_(new QLabel(tr("The audio plug-in is not connected.\n\nA program appears here as soon "
                            "as it plays sound. If one is playing now, start the plug-in: it is "
                            "the program “Tonvale” in “Tonvale.plugin”.")))
    , rowsLayout_(new QVBoxLayout) {
    setWindowTitle(tr("Tonvale"));
    notice_->setWordWrap(true);
    notice_->setTextFormat(Qt::PlainText);
    notice_->setAlignment(Qt::AlignCenter);
    rowsLayout_->setAlignment(Qt::AlignTop);
    rowsLayout_->setSpacing(0);
    rowsLayout_->setContentsMargins({});
    auto* const rows = new QWidget;
    rows->setLayout(rowsLayout_);
    auto* const scrollArea = new QScrollArea;
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setWidgetResizable(true);
    scrollArea->setWidget(rows);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addWidget(notice_);
    layout->addWidget(scrollArea, 1);
    keepToWholeRows();
    controller_.setView(this);
}

/// In the middle at first. Window managers that know of steps keep to them while a person pulls,
/// the others are corrected afterwards.
void VolumeWindow::keepToWholeRows() {
    const QSize size = WindowSize::snapped(usualSize, {itemHeight(), titleBarHeight()}).toSize();
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size,
                                    QWidget::screen()->availableGeometry()));
    setBaseSize(0, static_cast<int>(titleBarHeight()));
    setSizeIncrement(1, rowHeight);
    endOfResizing_.setSingleShot(true);
    endOfResizing_.setInterval(restOfResizing);
    connect(&endOfResizing_, &QTimer::timeout, this, &VolumeWindow::snap);
}

VolumeWindow::~VolumeWindow() {
    controller_.setView(nullptr);
}

void VolumeWindow::appsDidChange(const QList<MVCommAppValue*>& apps) {
    std::vector<std::unique_ptr<Row>> rows;
    for (MVCommAppValue* const app : apps) {
        std::unique_ptr<Row> row = takeRow(app);
        if (row == nullptr)
            row = std::make_unique<Row>(controller_, *app);
        row->refresh();
        rowsLayout_->addWidget(row.get());
        rows.push_back(std::move(row));
    }
    rows_ = std::move(rows);
    notice_->setVisible(rows_.empty());
}

std::unique_ptr<VolumeWindow::Row> VolumeWindow::takeRow(const MVCommAppValue* app) {
    const auto found = std::ranges::find_if(
        rows_, [app](const auto& row) { return row != nullptr && row->app() == app; });
    if (found == rows_.end())
        return nullptr;
    rowsLayout_->removeWidget(found->get());
    return std::move(*found);
}

void VolumeWindow::handleActivity(qsizetype index, qint64 level100, float /*level*/) {
    rows_[static_cast<std::size_t>(index)]->setActivity(level100);
}

void VolumeWindow::itemDidChange(qsizetype index) {
    rows_[static_cast<std::size_t>(index)]->refresh();
}

void VolumeWindow::showProblem(const QString& text) {
    notice_->setText(text);
}

void VolumeWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    endOfResizing_.start();
}

/// Once for a size, since a window manager may insist on it.
void VolumeWindow::snap() {
    const QSize wanted = controller_.windowWillResize(size()).toSize();
    if (wanted == size() || size() == insistedSize_ || isMaximized() || isFullScreen())
        return;
    insistedSize_ = size();
    resize(wanted);
}

QRect VolumeWindow::frame() const {
    return isMaximized() || isFullScreen() ? normalGeometry() : geometry();
}

double VolumeWindow::itemHeight() const {
    return rowHeight;
}

double VolumeWindow::titleBarHeight() const {
    return 2 * margin;
}

void VolumeWindow::setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) {
    constexpr double largest = QWIDGETSIZE_MAX;
    setMinimumSize(minimum.toSize());
    setMaximumSize(maximum.boundedTo({largest, largest}).toSize());
}

void VolumeWindow::setFrame(const QRect& frame) {
    const auto screens = QGuiApplication::screens();
    const bool isSeen = std::ranges::any_of(screens, [&](const QScreen* screen) {
        return screen->availableGeometry().intersects(frame);
    });
    if (isSeen)
        setGeometry(frame);
    else
        resize(frame.size());
}
