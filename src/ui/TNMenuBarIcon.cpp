#include "ui/TNMenuBarIcon.h"

#include "platform/window/BundleImage.h"

namespace {

QIcon iconNamed(const QString& name) {
    QIcon icon;
    for (const double ratio : {1.0, 2.0, 3.0}) {
        const QImage image = platform::bundleImage(name, TNMenuBarIcon::iconSize(), ratio);
        if (image.isNull())
            return {};
        icon.addPixmap(QPixmap::fromImage(image));
    }
    return icon;
}

} // namespace

namespace TNMenuBarIcon {

QSize iconSize() {
    return {19, 19};
}

QIcon colorIcon() {
    return iconNamed(QStringLiteral("tonvale"));
}

QIcon grayscaleIcon() {
    return iconNamed(QStringLiteral("tn_grayscale"));
}

QIcon alternativeIcon() {
    return iconNamed(QStringLiteral("tn_alternative"));
}

} // namespace TNMenuBarIcon
