#include "framework/support/EntryWriter.h"

#include "platform/files/RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using platform::LastLink;

namespace {

/// A part of a path that every system takes.
QString safePart(QString part) {
    constexpr qsizetype longest = 120; // at most 255 bytes, almost always
    for (QChar& character : part) {
        if (character.category() == QChar::Other_Control || character == QLatin1Char('\\') ||
            character == QChar::ReplacementCharacter || character.isNull())
            character = QLatin1Char('_');
    }
    if (part == QLatin1String(".") || part == QLatin1String(".."))
        return QStringLiteral("_");
    if (part.size() > longest)
        part = part.left(longest / 2) + QStringLiteral("…") + part.right(longest / 2);
    return part;
}

std::optional<QByteArray> contentOf(const QString& path, LastLink link) {
    const auto file = platform::openRegularFile(QFile::encodeName(path).constData(), link);
    QFile content;
    if (!file || !content.open(file.get(), QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = content.readAll();
    return content.error() == QFileDevice::NoError ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace

QString EntryWriter::safeName(const QString& name) {
    QStringList parts;
    for (const QString& part : name.split(QLatin1Char('/'), Qt::SkipEmptyParts))
        parts.append(safePart(part));
    return parts.isEmpty() ? QStringLiteral("_") : parts.join(QLatin1Char('/'));
}

QString EntryWriter::uniqueName(const QString& name) {
    const QString safe = safeName(name);
    const qsizetype slash = safe.lastIndexOf(QLatin1Char('/'));
    const qsizetype dot = safe.lastIndexOf(QLatin1Char('.'));
    const qsizetype end = dot > slash + 1 ? dot : safe.size();
    QString unique = safe;
    for (int number = 2; taken_.contains(unique); ++number)
        unique = QStringLiteral("%1 (%2)%3").arg(safe.left(end)).arg(number).arg(safe.mid(end));
    for (qsizetype i = unique.indexOf(QLatin1Char('/')); i > 0;
         i = unique.indexOf(QLatin1Char('/'), i + 1))
        taken_.insert(unique.left(i));
    taken_.insert(unique);
    return unique;
}

bool EntryWriter::addData(const QByteArray& data, const QString& name) {
    return writeEntry(data, uniqueName(name));
}

bool EntryWriter::addPathRecursively(const QString& path, const Filter& handler) {
    const QString name = QFileInfo(QDir::cleanPath(path)).fileName();
    if (QFileInfo(path).isDir())
        return addFolder(path, name, handler);
    auto content = contentOf(path, LastLink::follow);
    if (!content)
        return false;
    content = handler(path, std::move(*content));
    return !content || addData(*content, name);
}

bool EntryWriter::addFolder(const QString& path, const QString& name, const Filter& handler) {
    bool isComplete = true;
    // Without QDir::Hidden it lists none that is hidden.
    const QDir folder(path);
    for (const QFileInfo& item : folder.entryInfoList(
             QDir::Files | QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString itemName = name + QLatin1Char('/') + item.fileName();
        isComplete = (item.isDir() ? addFolder(item.filePath(), itemName, handler)
                                   : addFile(item.filePath(), itemName, handler)) &&
                     isComplete;
    }
    return isComplete && folder.isReadable();
}

bool EntryWriter::addFile(const QString& path, const QString& name, const Filter& handler) {
    auto content = contentOf(path, LastLink::refuse);
    if (!content)
        return false;
    content = handler(path, std::move(*content));
    return !content || addData(*content, name);
}
