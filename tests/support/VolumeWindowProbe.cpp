#include "support/VolumeWindowProbe.h"

#include "ui/VolumeWindow.h"

#include <QCheckBox>
#include <QLabel>
#include <QProgressBar>
#include <QSlider>

#include <algorithm>

namespace support {

namespace {

QList<QLabel*> nameLabels(const VolumeWindow& window) {
    QList<QLabel*> labels;
    for (const QSlider* const slider : window.findChildren<QSlider*>())
        labels += slider->parentWidget()->findChildren<QLabel*>(QStringLiteral("name"));
    std::sort(labels.begin(), labels.end(), [&window](const QLabel* a, const QLabel* b) {
        return a->mapTo(&window, QPoint()).y() < b->mapTo(&window, QPoint()).y();
    });
    return labels;
}

} // namespace

QStringList rowNames(const VolumeWindow& window) {
    QStringList names;
    for (const QLabel* const label : nameLabels(window))
        names += label->text();
    return names;
}

RowProbe::RowProbe(const VolumeWindow& window, const QString& name) {
    for (const QLabel* const label : nameLabels(window)) {
        if (label->text() != name)
            continue;
        slider = label->parentWidget()->findChild<QSlider*>();
        level = label->parentWidget()->findChild<QProgressBar*>();
        mute = label->parentWidget()->findChild<QCheckBox*>();
    }
}

QString notice(const VolumeWindow& window) {
    for (const QLabel* const label :
         window.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!label->isHidden())
            return label->text();
    }
    return {};
}

} // namespace support
