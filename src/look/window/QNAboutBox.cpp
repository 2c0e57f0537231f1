#include "look/window/QNAboutBox.h"

#include "look/theme/CurrentTheme.h"
#include "platform/bundle/Bundle.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/window/BundleImage.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QVBoxLayout>

using platform::formatted;

namespace {

constexpr QSize usualSize(380, 260);
constexpr int iconSize = 96;

/// A short text in a frame.
class Mark final : public QLabel {
  public:
    explicit Mark(const QString& text) : QLabel(text) {
        QFont small = font();
        small.setPointSizeF(small.pointSizeF() * 0.85);
        setFont(small);
        setContentsMargins(8, 2, 8, 2);
    }

  protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor color = CurrentTheme::theme().windowTitleBarTextColor();
        color.setAlphaF(0.5F);
        painter.setPen(color);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
        painter.end();
        QLabel::paintEvent(event);
    }
};

/// The gradient of the theme, and what stands on it.
class AboutContent final : public QWidget {
  public:
    explicit AboutContent(bool shows64BitMark) {
        const QString name = QCoreApplication::applicationName();
        const QString version = QString::fromStdString(platform::Bundle::main().version());
        auto* const layout = new QVBoxLayout(this);
        layout->setSpacing(4);
        layout->addStretch();
        auto* const icon = new QLabel;
        icon->setPixmap(platform::bundleIcon(QStringLiteral("tonvale.png"))
                            .pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
        icon->setAlignment(Qt::AlignCenter);
        layout->addWidget(icon);
        layout->addWidget(line(name, 1.5));
        layout->addWidget(line(formatted(Texts::tr("Version %@"), version), 1.0));
        if (shows64BitMark)
            layout->addWidget(new Mark(Texts::tr("64-bit")), 0, Qt::AlignHCenter);
        layout->addSpacing(8);
        layout->addWidget(line(Texts::tr("The volume of each program, separately."), 1.0));
        layout->addStretch();
        colorText();
        connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, &AboutContent::colorText);
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const MVBlackTheme& theme = CurrentTheme::theme();
        QLinearGradient gradient(0, height(), 0, 0);
        gradient.setColorAt(0, theme.aboutWindowBackgroundGradientStartColor());
        gradient.setColorAt(1, theme.aboutWindowBackgroundGradientEndColor());
        QPainter(this).fillRect(rect(), gradient);
    }

  private:
    static QLabel* line(const QString& text, double size) {
        auto* const label = new QLabel(text);
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        QFont font = label->font();
        font.setPointSizeF(font.pointSizeF() * size);
        font.setBold(size > 1);
        label->setFont(font);
        return label;
    }

    void colorText() {
        QPalette palette;
        palette.setColor(QPalette::WindowText, CurrentTheme::theme().windowTitleBarTextColor());
        setPalette(palette);
    }
};

} // namespace

QNAboutBox::QNAboutBox(QWidget* parent, bool shows64BitMark)
    : MVCustomWindow(new AboutContent(shows64BitMark), closable, parent) {
    setWindowTitle(formatted(Texts::tr("About %@"), QCoreApplication::applicationName()));
    setFixedSize(usualSize);
}

void QNAboutBox::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        MVCustomWindow::keyPressEvent(event);
}
