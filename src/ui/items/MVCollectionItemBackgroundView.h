#pragma once

#include <QByteArray>
#include <QWidget>

#include <memory>

class QPropertyAnimation;

/// The background of an item; moves to the positions that the grid sets. Shows by a frame whether
/// the mouse is on the item, is pressed there, or the item is the current one. Main thread only.
class MVCollectionItemBackgroundView : public QWidget {
    Q_OBJECT

  public:
    explicit MVCollectionItemBackgroundView(QWidget* parent = nullptr);
    ~MVCollectionItemBackgroundView() override;

    /// The animation for changes of the property `key`; null if it changes at once: in the first
    /// second of the volume controller, while the window is being resized, and if animations are
    /// disabled.
    std::unique_ptr<QPropertyAnimation> animationForKey(const QByteArray& key);

    /// Sets the size at once and moves it to the position.
    void placeAt(const QRect& place);

    /// The current one is what keys and the menu apply to.
    bool isCurrent() const noexcept { return isCurrent_; }
    void setCurrent(bool isCurrent);

    /// What the toolkit does when the mouse moves, for callers that move the item instead.
    void setUnderMouse(bool isUnderMouse);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

    void setPressed(bool isPressed);

    /// Called when it becomes or is no longer under the mouse or the current one.
    virtual void lightChanged(bool /*isLit*/) {}

  private:
    void setLight(bool& light, bool isOn);

    std::unique_ptr<QPropertyAnimation> move_;
    bool isCurrent_ = false;
    bool isUnderMouse_ = false;
    bool isPressed_ = false;
};
