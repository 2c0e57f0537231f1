#pragma once

#include <QString>
#include <QVariantMap>

/// What has become of an archive that the user wanted to save.
struct SavedArchive {
    bool isSaved = false;
    QString status; ///< for the user
};

/// Writes the archive of a form that QNSupportLog has made to a file that only this user can read.
/// It replaces the file as a whole, or leaves it as it was.
[[nodiscard]] SavedArchive saveArchive(const QString& file, const QVariantMap& form);
