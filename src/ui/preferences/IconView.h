#pragma once

#include <QIcon>
#include <QWidget>

/// Shows an icon in its size, sharp on every screen. Main thread only.
class IconView final : public QWidget {
    Q_OBJECT

  public:
    /// `size` is in pixels.
    IconView(QIcon icon, const QSize& size);

    const QIcon& icon() const noexcept { return icon_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const QIcon icon_;
};
