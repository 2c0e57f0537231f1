#pragma once

#include <QIcon>
#include <QWidget>

/// An icon, as large as there is room. A click with the secondary button is for what it lies on;
/// to assistive tools it is decoration. Main thread only.
class MVCollectionViewImageView final : public QWidget {
    Q_OBJECT

  public:
    using QWidget::QWidget;

    void setIcon(const QIcon& icon);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QIcon icon_;
};
