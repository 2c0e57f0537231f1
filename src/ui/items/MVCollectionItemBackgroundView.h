#pragma once

#include <QByteArray>
#include <QWidget>

#include <memory>

class QPropertyAnimation;

/// The background of an item; moves to the positions that the grid sets. Main thread only.
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

  private:
    std::unique_ptr<QPropertyAnimation> move_;
};
