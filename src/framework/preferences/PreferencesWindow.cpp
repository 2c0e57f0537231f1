#include "framework/preferences/PreferencesWindow.h"

#include "framework/preferences/QNObjToolbarItem.h"
#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "platform/text/Texts.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QShortcut>
#include <QVBoxLayout>

namespace {

/// The strip below the title bar, of the same colour.
class Toolbar final : public QWidget {
  public:
    Toolbar() {
        auto* const layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, line);
        layout->setSpacing(0);
        layout->addStretch();
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const MVBlackTheme& theme = CurrentTheme::theme();
        QPainter painter(this);
        painter.fillRect(rect(), theme.windowTitleBarGradientColor1());
        painter.fillRect(0, height() - line, width(), line,
                         theme.isHighContrast() ? theme.windowTitleBarTextColor()
                                                : theme.windowTitleBarGradientColor2());
    }

  private:
    static constexpr int line = 1;
};

QWidget* makeContent() {
    auto* const content = new QWidget;
    auto* const layout = new QVBoxLayout(content);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    layout->addWidget(new Toolbar);
    auto* const place = new QWidget;
    place->setAutoFillBackground(true);
    auto* const rows = new QVBoxLayout(place);
    rows->setContentsMargins({});
    rows->setSizeConstraint(QLayout::SetNoConstraint); // the window's size is the controller's
    layout->addWidget(place, 1);
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    return content;
}

} // namespace

PreferencesWindow::PreferencesWindow()
    : MVCustomWindow(makeContent(), closable)
    , toolbar_(static_cast<QWidget*>(contentView().layout()->itemAt(0)->widget()))
    , place_(static_cast<QWidget*>(contentView().layout()->itemAt(1)->widget())) {
    setWindowTitle(Texts::tr("Preferences"));
    for (const auto& key : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(key, this), &QShortcut::activated, this, &QWidget::close);
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, &PreferencesWindow::colorParts);
    colorParts();
}

void PreferencesWindow::colorParts() {
    setPalette(themePalette());
}

QBoxLayout& PreferencesWindow::toolbarLayout() const {
    return *static_cast<QBoxLayout*>(toolbar_->layout());
}

void PreferencesWindow::addItem(QNObjToolbarItem& item) {
    QBoxLayout& layout = toolbarLayout();
    layout.insertWidget(layout.count() - 1, &item); // before the stretch
}

void PreferencesWindow::setView(QWidget* view) {
    if (view_ == view)
        return;
    if (view_ != nullptr) {
        place_->layout()->removeWidget(view_);
        view_->hide();
    }
    view_ = view;
    if (view_ == nullptr)
        return;
    place_->layout()->addWidget(view_);
    view_->show();
}

QSize PreferencesWindow::sizeForView(const QSize& view) const {
    return sizeForContent(view + QSize(0, toolbar_->sizeHint().height()));
}

void PreferencesWindow::moveEvent(QMoveEvent* event) {
    MVCustomWindow::moveEvent(event);
    Q_EMIT moved();
}

void PreferencesWindow::closeEvent(QCloseEvent* event) {
    Q_EMIT willClose();
    MVCustomWindow::closeEvent(event);
}
