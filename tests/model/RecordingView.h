#pragma once

#include "model/AppVolumeView.h"
#include "model/MVCommAppValue.h"

#include <QStringList>

/// A view without a window that keeps what it is told.
class RecordingView final : public AppVolumeView {
  public:
    void appsWillChange() override { told += "will"; }
    void appsDidChange(const QList<MVCommAppValue*>& apps) override {
        shown = apps;
        QStringList names{"did"};
        for (const MVCommAppValue* const app : apps)
            names += app->displayName();
        told += names.join(QLatin1Char(' '));
    }
    void handleActivity(qsizetype index, qint64 level100, float level) override {
        shown[index]->setActivity(level100);
        told += QStringLiteral("activity %1 %2 %3")
                    .arg(index)
                    .arg(level100)
                    .arg(static_cast<double>(level), 0, 'g', 3);
    }
    void itemDidChange(qsizetype index) override { told += QStringLiteral("item %1").arg(index); }
    double itemHeight() const override { return 40; }
    double titleBarHeight() const override { return 22; }
    void setSizeLimits(const QSizeF& least, const QSizeF& most) override {
        minimum = least;
        maximum = most;
    }
    QRect frame() const override { return place; }
    void setFrame(const QRect& frame) override { place = frame; }

    QStringList told;
    QList<MVCommAppValue*> shown;
    QSizeF minimum;
    QSizeF maximum;
    QRect place;
};
