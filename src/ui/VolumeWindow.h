#pragma once

#include "platform/desktop/WindowSight.h"
#include "ui/AppVolumeView.h"
#include "ui/items/MVCollectionViewItem.h"

#include <QSize>
#include <QTimer>
#include <QWidget>

class AppVolumeController;
class MVCollectionView;
class QScrollArea;

/// The window: a grid with one item for each record of the controller, which scrolls. Shows whole
/// rows, and draws nothing while nobody can see it. Main thread.
class VolumeWindow final : public QWidget, public AppVolumeView {
    Q_OBJECT

  public:
    /// Becomes the view of the items' controller, which must outlive the window.
    explicit VolumeWindow(const MVCollectionViewItem::Surroundings& surroundings);
    ~VolumeWindow() override;

    /// Those of the process.
    static MVCollectionViewItem::Surroundings sharedSurroundings(AppVolumeController& controller);

    void appsWillChange() override {}
    void appsDidChange(const QList<MVCommAppValue*>& apps) override;
    void handleActivity(qsizetype index, qint64 level100, float level) override;
    void itemDidChange(qsizetype index) override;
    void showProblem(const QString& text) override;
    double itemHeight() const override;
    double titleBarHeight() const override;
    void setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) override;
    QRect frame() const override;
    void setFrame(const QRect& frame) override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void keepToWholeRows();
    void snap();
    void updateHint();

    const MVCollectionViewItem::Surroundings surroundings_;
    QScrollArea* const scrollArea_;
    MVCollectionView* const grid_;
    platform::WindowSight sight_{*this};
    QTimer endOfResizing_;
    QSize insistedSize_; // the last one that had to be corrected
    QString problem_;    // why nothing can be shown, if that is known
};
