#include "platform/text/WrappablePath.h"

#include <QTextBoundaryFinder>

namespace platform {

QString wrappablePath(const QString& path) {
    constexpr QChar wordJoiner(0x2060);
    QString unbroken;
    QTextBoundaryFinder breaks(QTextBoundaryFinder::Line, path);
    for (qsizetype i = 0; i < path.size(); ++i) {
        breaks.setPosition(i);
        if (i > 0 && path[i - 1] != QLatin1Char('/') && breaks.isAtBoundary())
            unbroken += wordJoiner;
        unbroken += path[i];
    }
    return unbroken;
}

} // namespace platform
