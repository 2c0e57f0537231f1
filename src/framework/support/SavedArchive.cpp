#include "framework/support/SavedArchive.h"

#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QFile>
#include <QSaveFile>

SavedArchive saveArchive(const QString& file, const QVariantMap& form) {
    const QByteArray archive = form[QStringLiteral("file")]
                                   .toMap()[QStringLiteral("QNUploaderPostFileData")]
                                   .toByteArray();
    QSaveFile target(file);
    const bool isSaved = !archive.isEmpty() && target.open(QIODevice::WriteOnly) &&
                         target.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                         target.write(archive) == archive.size() && target.commit();
    if (isSaved)
        return {true, platform::formatted(Texts::tr("Saved as %@"), file)};
    return {false, platform::formatted(Texts::tr("Couldn't save %@: %@"), file,
                                       archive.isEmpty() ? Texts::tr("the disk may be full")
                                                         : target.errorString())};
}
