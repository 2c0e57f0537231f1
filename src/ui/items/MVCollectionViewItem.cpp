#include "ui/items/MVCollectionViewItem.h"

#include "comm/MVCommLogText.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "look/theme/CurrentTheme.h"
#include "look/window/MenuLook.h"
#include "look/window/QNToolTip.h"
#include "model/AppVolumeController.h"
#include "model/VolumeConversion.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/text/Format.h"
#include "platform/text/OneLineText.h"
#include "platform/text/Texts.h"
#include "platform/window/BundleImage.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/ItemStatus.h"
#include "ui/items/LastChangeText.h"
#include "ui/items/MVCollectionViewImageView.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/PercentField.h"
#include "ui/items/TNVolumeSlider.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QCursor>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QStyle>

#include <utility>
#include <variant>

using platform::formatted;

namespace {

/// Makes a text from another program safe for display.
QString shownText(const QString& text) {
    constexpr qsizetype longest = 500;
    return platform::oneLineText(text.left(longest));
}

QString nameOf(const MVCommAppValue& app) {
    QString name = shownText(app.displayName());
    return platform::isInvisible(name) ? formatted(Texts::tr("Process %d"), app.pid()) : name;
}

/// Those that say something, each on a line.
QString lines(const QStringList& texts) {
    QStringList shown;
    for (const QString& text : texts) {
        if (!text.isEmpty())
            shown += shownText(text);
    }
    return shown.join(QLatin1Char('\n'));
}

QString withoutMnemonic(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

MVCollectionViewItem::MVCollectionViewItem(const Dependencies& dependencies, MVCommAppValue& app,
                                           QWidget* parent)
    : MVCollectionItemBackgroundView(parent)
    , dependencies_(dependencies)
    , app_(&app)
    , iconView_(new MVCollectionViewImageView(this))
    , label_(new MVCollectionViewTextField(this))
    , muteView_(new MVMuteImageView(this))
    , slider_(new TNVolumeSlider(this))
    , status_(new ItemStatus(this))
    , releaseObserver_(std::make_unique<platform::NotificationObserver>(
          MVVolumeSlider::didReleaseMouseNotification, [this](const QVariant& object) {
              if (object.value<QObject*>() == slider_)
                  volumeSliderDidReleaseMouse();
          })) {
    iconView_->setIcon(displayIcon());
    label_->setObjectName(QStringLiteral("name"));
    label_->setText(nameOf(app));
    muteView_->setApp(&app);
    connect(status_, &ItemStatus::sizeChanged, this, &MVCollectionViewItem::layOut);
    connect(status_, &ItemStatus::percentPressed, this,
            [this] { editPercent(Qt::MouseFocusReason); });
    updateControls();
    slider_->setHandler([this] { sliderAction(); });
    connect(&app, &MVCommAppValue::iconChanged, this,
            [this] { iconView_->setIcon(displayIcon()); });
    connect(&app, &MVCommAppValue::hasActivityChanged, this,
            &MVCollectionViewItem::activityCameOrWent);
    connect(&app, &MVCommAppValue::mutedChanged, this, &MVCollectionViewItem::wasMuted);
}

MVCollectionViewItem::~MVCollectionViewItem() {
    if (field_ != nullptr)
        field_->disconnect(this); // it loses the focus meanwhile
}

QString MVCollectionViewItem::displayName() const {
    return app_ != nullptr ? app_->displayName() : QString();
}

QIcon MVCollectionViewItem::displayIcon() const {
    if (app_ == nullptr)
        return {};
    if (!app_->isBeeps())
        return app_->icon();
    static const auto& soundEffects =
        *new QIcon(platform::bundleIcon(QStringLiteral("soundEffects.icns")));
    return soundEffects.isNull() ? app_->icon() : soundEffects;
}

QColor MVCollectionViewItem::displayNameTextColor() const {
    const MVBlackTheme& theme = CurrentTheme::theme();
    if (app_ == nullptr || !app_->hasActivity())
        return theme.displayNameNoActivityColor();
    return app_->muted() ? theme.displayNameActivityMutedColor() : theme.displayNameActivityColor();
}

/// By a level, or by a merge that has found another process behind the record.
void MVCollectionViewItem::activityCameOrWent(bool hasActivity) {
    const char* const format = hasActivity ? "'%@' gained activity" : "'%@' lost activity";
    QNLog(qnlog_information, format, MVCommLogText(displayName()));
    if (!hasActivity)
        slider_->setActivity(0.0F);
    announceTextColor();
}

void MVCollectionViewItem::announceTextColor() {
    showStatus();
    label_->setTextColor(displayNameTextColor());
    Q_EMIT displayNameTextColorChanged();
}

void MVCollectionViewItem::updateControls() {
    if (app_ == nullptr)
        return;
    const int percent = dependencies_.controller.percentOf(*app_);
    slider_->showValue(VolumeConversion::fractionForPercent(percent));
    slider_->setMuted(app_->muted());
    const bool isControllable = dependencies_.controller.reasonNotControllable(*app_).isEmpty();
    slider_->setEnabled(isControllable);
    muteView_->setControllable(isControllable);
    announceTextColor();
}

void MVCollectionViewItem::sliderAction() {
    if (app_ == nullptr)
        return;
    app_->setVolume(static_cast<double>(slider_->floatValue()));
    platform::NotificationCenter::standard().post(AppVolumeController::sliderChangedNotification,
                                                  QVariant::fromValue(app_.data()));
    showStatus();
}

void MVCollectionViewItem::showStatus() {
    if (app_ != nullptr)
        status_->setState(
            {slider_->percent(), app_->muted(), app_->hasActivity(), slider_->isEnabled()});
}

/// The slider's value counts, whatever the record's volume has become since.
void MVCollectionViewItem::volumeSliderDidReleaseMouse() {
    if (app_ == nullptr)
        return;
    const float volume = slider_->floatValue();
    dependencies_.controller.sliderReleased(*app_, static_cast<double>(volume));
    QNLog(qnlog_user, "'%@' volume changed to %.2f", MVCommLogText(displayName()), volume);
    if (!app_->hasActivity() && dependencies_.mayBeep())
        dependencies_.beepAtVolume(volume);
}

void MVCollectionViewItem::wasMuted() {
    dependencies_.controller.appWasMuted(*app_);
    slider_->setMuted(app_->muted());
    announceTextColor();
}

void MVCollectionViewItem::handleActivity(qint64 level100, float level) {
    if (app_ == nullptr)
        return;
    const MVCommActivityChange change = app_->setActivity(level100);
    if (change == kMVCommActivityBegan || change == kMVCommActivityMoved)
        slider_->setActivity(level);
}

void MVCollectionViewItem::ignore() {
    if (app_ == nullptr)
        return;
    const QString process = app_->processName(); // the record goes meanwhile
    dependencies_.ignore(process);
}

void MVCollectionViewItem::reset() {
    const bool isFull = slider_->percent() == VolumeConversion::full;
    if (app_ == nullptr || isFull || !slider_->isEnabled())
        return;
    slider_->setSliderValue_(1.0F, false);
    slider_->update();
}

void MVCollectionViewItem::editPercent(Qt::FocusReason reason) {
    if (app_ == nullptr || !slider_->isEnabled() || field_ != nullptr)
        return;
    field_ = new PercentField(slider_->percent(), this);
    setTabOrder(muteView_, field_);
    setTabOrder(field_, slider_);
    connect(field_, &PercentField::entered, this, [this, reason](const TypedVolume& volume) {
        closeField(reason);
        setTyped(volume);
    });
    connect(field_, &PercentField::left, this, [this, reason] { closeField(reason); });
    layOut();
    field_->show();
    field_->setFocus(reason);
}

/// The focus goes to the slider, unless somebody else has it already.
void MVCollectionViewItem::closeField(Qt::FocusReason reason) {
    PercentField* const field = std::exchange(field_, nullptr);
    if (field == nullptr)
        return;
    if (window()->focusWidget() == field)
        select(reason);
    field->hide();
    field->deleteLater();
}

void MVCollectionViewItem::setTyped(const TypedVolume& volume) {
    if (app_ == nullptr || !slider_->isEnabled())
        return;
    if (const auto* const mute = std::get_if<TypedVolume::Mute>(&volume.wish)) {
        if (app_->muted() != mute->isMuted)
            muteView_->toggle();
        return;
    }
    const int percent = std::get<VolumeChange>(volume.wish).appliedTo(slider_->percent());
    slider_->setSliderValue_(VolumeConversion::fractionForPercent(percent), false);
    slider_->update();
}

void MVCollectionViewItem::select(Qt::FocusReason reason) {
    QWidget& part = slider_->isEnabled() ? static_cast<QWidget&>(*slider_) : *muteView_;
    part.setFocus(reason);
}

/// On the icon, the name and between the parts.
void MVCollectionViewItem::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    setPressed(true);
    select(Qt::MouseFocusReason);
}

void MVCollectionViewItem::mouseReleaseEvent(QMouseEvent* /*event*/) {
    setPressed(false);
}

void MVCollectionViewItem::lightChanged(bool isLit) {
    status_->setLit(isLit);
}

QMenu* MVCollectionViewItem::makeContextMenu(QWidget* parent) {
    auto* const menu = new QMenu(parent);
    followTheme(*menu);
    const QString title = formatted(Texts::tr("Ignore \"%@\""), label_->text());
    // Not while the menu handles its event, for it goes with the item.
    menu->addAction(withoutMnemonic(title), this, &MVCollectionViewItem::ignore,
                    Qt::QueuedConnection);
    QAction* const resetting =
        menu->addAction(Texts::tr("Reset to 100 %"), this, &MVCollectionViewItem::reset);
    resetting->setShortcut(Qt::CTRL | Qt::Key_0); // which the grid handles
    resetting->setEnabled(slider_->isEnabled() && slider_->percent() != VolumeConversion::full);
    return menu;
}

void MVCollectionViewItem::contextMenuEvent(QContextMenuEvent* event) {
    QMenu* const menu = makeContextMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

bool MVCollectionViewItem::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || app_ == nullptr)
        return QWidget::event(event);
    const auto* const help = static_cast<QHelpEvent*>(event);
    QNToolTip::shared().setText(tipAt(help->pos()));
    QNToolTip::shared().showAt(help->globalPos(), *this);
    return true;
}

QString MVCollectionViewItem::tipAt(const QPoint& place) const {
    if (app_ == nullptr)
        return {};
    const bool isSlider = slider_->geometry().contains(place);
    QString reason = reasonNotControllable();
    if (!reason.isEmpty() && (isSlider || muteView_->geometry().contains(place)))
        return reason;
    if (isSlider)
        return lines({formatted(QStringLiteral("%d %%"), dependencies_.controller.percentOf(*app_)),
                      lastChange()});
    const QString text = description();
    return text.isEmpty() ? label_->text() : label_->text() + QLatin1Char('\n') + text;
}

QString MVCollectionViewItem::description() const {
    return app_ != nullptr ? lines({app_->path(), dependencies_.controller.whyNamed(*app_),
                                    lastChange(), reasonNotControllable()})
                           : QString();
}

QString MVCollectionViewItem::lastChange() const {
    const auto change = dependencies_.controller.lastChange(*app_);
    return change ? lastChangeText(*change) : QString();
}

QString MVCollectionViewItem::state() const {
    if (app_ == nullptr)
        return {};
    QStringList states{
        formatted(QStringLiteral("%d %%"), dependencies_.controller.percentOf(*app_))};
    if (app_->hasActivity())
        states += Texts::tr("playing");
    if (app_->muted())
        states += Texts::tr("muted");
    return states.join(QStringLiteral(", "));
}

QString MVCollectionViewItem::reasonNotControllable() const {
    return app_ != nullptr ? shownText(dependencies_.controller.reasonNotControllable(*app_))
                           : QString();
}

void MVCollectionViewItem::mouseEntered() {
    const QString text = formatted(
        Texts::tr(
            "%@ cannot work with \"%@\" because it's a sandboxed application.\n\nSandboxed apps "
            "can be hidden via \"Hide sandboxed applications\" in the Preferences."),
        QCoreApplication::applicationName(), label_->text());
    QNToolTip::shared().setText(text);
    QNToolTip::shared().showAt(QCursor::pos(), *this);
}

void MVCollectionViewItem::mouseExited() {
    QNToolTip::shared().hide();
}

void MVCollectionViewItem::resizeEvent(QResizeEvent* /*event*/) {
    layOut();
}

void MVCollectionViewItem::layOut() {
    const ItemLayout places(size(), layoutDirection(), status_->sizeHint().width());
    iconView_->setGeometry(places.icon);
    label_->setGeometry(places.name);
    status_->setGeometry(places.status);
    muteView_->setGeometry(places.mute);
    slider_->setGeometry(places.slider);
    if (field_ != nullptr)
        field_->setGeometry(QStyle::alignedRect(layoutDirection(),
                                                Qt::AlignRight | Qt::AlignVCenter,
                                                field_->sizeHint(), places.status));
}
