#pragma once

#include <QIcon>
#include <QWidget>

/// An icon, as large as fits. Secondary clicks go to its parent; for assistive tools it is
/// decoration. Main thread only.
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
