#include "ui/VolumeWindow.h"

#include "comm/MVComm.h"
#include "ui/OneLineText.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QScrollArea>
#include <QSlider>
#include <QVBoxLayout>

namespace {

constexpr int fullPercent = 100;

int percentOf(float level) {
    const float clamped = level > 0.0F ? std::min(level, 1.0F) : 0.0F; // NaN is not above 0
    return static_cast<int>(clamped * static_cast<float>(fullPercent));
}

} // namespace

class VolumeWindow::Row final : public QWidget {
  public:
    Row(VolumeWindow& window, std::uint32_t pid) : name(new QLabel), level(new QProgressBar) {
        auto* const slider = new QSlider(Qt::Horizontal);
        auto* const mute = new QCheckBox(VolumeWindow::tr("Mute"));
        auto* const layout = new QHBoxLayout(this);
        for (QWidget* const part : std::initializer_list<QWidget*>{name, slider, level, mute})
            layout->addWidget(part);
        name->setTextFormat(Qt::PlainText); // a name is somebody else's text
        name->setFixedWidth(180);
        slider->setRange(0, fullPercent);
        slider->setValue(fullPercent);
        slider->setAccessibleName(VolumeWindow::tr("Volume"));
        level->setTextVisible(false);
        connect(slider, &QSlider::valueChanged, &window,
                [&window, pid](int value) { window.send(kMVCommSetVolume, pid, value); });
        connect(mute, &QCheckBox::toggled, &window,
                [&window, pid](bool muted) { window.send(kMVCommSetMute, pid, muted ? 1 : 0); });
    }

    QLabel* const name;
    QProgressBar* const level;
};

VolumeWindow::VolumeWindow(MVComm& comm)
    : comm_(comm)
    , notice_(new QLabel(tr("The audio plug-in is not connected.\n\nA program appears here as soon "
                            "as it plays sound. If one is playing now, start the plug-in: it is "
                            "the program “Tonvale” in “Tonvale.plugin”.")))
    , rowsLayout_(new QVBoxLayout) {
    resize(640, 320);
    setWindowTitle(tr("Tonvale"));
    notice_->setWordWrap(true);
    notice_->setTextFormat(Qt::PlainText);
    notice_->setAlignment(Qt::AlignCenter);
    rowsLayout_->setAlignment(Qt::AlignTop);
    auto* const rows = new QWidget;
    rows->setLayout(rowsLayout_);
    auto* const scrollArea = new QScrollArea;
    scrollArea->setWidgetResizable(true);
    scrollArea->setWidget(rows);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(notice_);
    layout->addWidget(scrollArea, 1);
}

VolumeWindow::~VolumeWindow() = default;

void VolumeWindow::updateConnections() {
    auto previous = std::exchange(rows_, {});
    for (const MVCommConnectionProcess& process : comm_.connectionProcesses()) {
        if (process.name.isNull())
            continue;
        std::unique_ptr<Row>& row = rows_[process.pid];
        if (row == nullptr)
            row = std::move(previous[process.pid]);
        if (row == nullptr) {
            row = std::make_unique<Row>(*this, process.pid);
            rowsLayout_->addWidget(row.get());
        }
        row->name->setText(oneLineText(process.name));
        row->name->setToolTip(
            QStringLiteral("<p>%1</p>").arg(oneLineText(process.path).toHtmlEscaped()));
    }
    notice_->setVisible(rows_.empty());
}

void VolumeWindow::handleActivity(std::uint32_t pid, float level) {
    if (const auto found = rows_.find(pid); found != rows_.end())
        found->second->level->setValue(percentOf(level));
}

void VolumeWindow::showProblem(const QString& text) {
    notice_->setText(text);
}

void VolumeWindow::send(std::int32_t type, std::uint32_t pid, int value) {
    MVCommConsoleMessage message{};
    message.type = type;
    message.pid = static_cast<std::int32_t>(pid);
    message.value = value;
    comm_.sendMessage(&message);
}
