#pragma once

#include <QByteArray>
#include <QWidget>

#include <memory>

class QPropertyAnimation;

/// What an item of the grid lies on; moves to another place there as the grid says. Main thread
/// only.
class MVCollectionItemBackgroundView : public QWidget {
    Q_OBJECT

  public:
    explicit MVCollectionItemBackgroundView(QWidget* parent = nullptr);
    ~MVCollectionItemBackgroundView() override;

    /// What leads the property `key` to another value; null when that is set at once: in the first
    /// second of the volume controller, while the window is being resized, and for a person who
    /// wants little motion.
    std::unique_ptr<QPropertyAnimation> animationForKey(const QByteArray& key);

    /// Makes it so large and moves it there.
    void placeAt(const QRect& place);

  private:
    std::unique_ptr<QPropertyAnimation> move_;
};
