#pragma once

#include <QString>
#include <QStringList>

class MVCollectionViewItem;
class MVMuteImageView;
class MVVolumeSlider;
class VolumeWindow;

namespace support {

/// The names of the items that a volume window shows, in their order.
QStringList rowNames(const VolumeWindow& window);

/// One item of a volume window and its controls; null, all of them, when it has no such item. They
/// belong to the window.
struct RowProbe {
    RowProbe(const VolumeWindow& window, const QString& name);

    /// As a drag ends there.
    void slideTo(int percent) const;

    /// In percent, as the slider shows it.
    int level() const;

    MVCollectionViewItem* item = nullptr;
    MVVolumeSlider* slider = nullptr;
    MVMuteImageView* mute = nullptr;
};

/// What the window says in place of items; empty when it shows some.
QString notice(const VolumeWindow& window);

} // namespace support
