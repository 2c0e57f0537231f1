#pragma once

#include "ui/AppVolumeView.h"

#include <QSize>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

class AppVolumeController;
class QLabel;
class QVBoxLayout;

/// The window: one row for each record of the controller with its icon, name, volume, level and
/// mute. Main thread.
class VolumeWindow final : public QWidget, public AppVolumeView {
    Q_OBJECT

  public:
    /// Becomes the view of `controller`, which must outlive the window.
    explicit VolumeWindow(AppVolumeController& controller);
    ~VolumeWindow() override;

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
    class Row;

    void keepToWholeRows();
    void snap();
    std::unique_ptr<Row> takeRow(const MVCommAppValue* app);

    AppVolumeController& controller_;
    QLabel* notice_;
    QVBoxLayout* rowsLayout_;
    std::vector<std::unique_ptr<Row>> rows_; // in the order of the records
    QTimer endOfResizing_;
    QSize insistedSize_; // the last one that had to be corrected
};
