#include "framework/support/PostBody.h"

#include "framework/support/QNUploader.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QUrl>

#include <algorithm>
#include <cstring>

namespace {

/// A name in quotes, in the way of web browsers: quotes and line ends are escaped.
QByteArray quoted(const QString& name) {
    QByteArray bytes = name.toUtf8();
    bytes.replace('"', "%22").replace('\r', "%0D").replace('\n', "%0A");
    return '"' + bytes + '"';
}

QByteArray header(const QString& name, const QString& fileName = {}) {
    QByteArray text = "Content-Disposition: form-data; name=" + quoted(name);
    if (!fileName.isNull())
        text += "; filename=" + quoted(fileName);
    return text + "\r\n\r\n";
}

/// The digits of a number; nothing for what is none.
std::optional<QByteArray> digitsOf(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QByteArrayLiteral("1") : QByteArrayLiteral("0");
    case QMetaType::Float:
        return QByteArray::number(static_cast<double>(value.toFloat()));
    case QMetaType::Double:
        return QByteArray::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return QByteArray::number(value.toLongLong());
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return QByteArray::number(value.toULongLong());
    default:
        return std::nullopt;
    }
}

} // namespace

PostBody::PostBody(const QVariantMap& fields) {
    addBytes(QByteArray("--") + boundary + "\r\n");
    for (auto field = fields.begin(); field != fields.end(); ++field)
        addField(field.key(), field.value());
}

PostBody::~PostBody() = default;

bool PostBody::open(OpenMode mode) {
    return complete_ && (mode & WriteOnly) == 0 && QIODevice::open(mode | Unbuffered);
}

bool PostBody::reset() {
    return !wasRead_ && seek(0);
}

void PostBody::addField(const QString& name, const QVariant& value) {
    if (value.typeId() == QMetaType::QUrl) {
        if (!value.toUrl().isLocalFile())
            return;
        addFileField(name, value.toUrl());
    } else if (value.typeId() == QMetaType::QString) {
        addBytes(header(name) + value.toString().toUtf8());
    } else if (value.typeId() == QMetaType::QByteArray) {
        addBytes(header(name));
        addBytes(value.toByteArray());
    } else if (const auto digits = digitsOf(value)) {
        addBytes(header(name) + *digits);
    } else if (value.typeId() == QMetaType::QVariantMap) {
        const QVariantMap file = value.toMap();
        const QVariant fileName = file.value(QNUploader::postFileName);
        const QVariant data = file.value(QNUploader::postFileData);
        if (fileName.typeId() == QMetaType::QString && data.typeId() == QMetaType::QByteArray) {
            addBytes(header(name, fileName.toString()));
            addBytes(data.toByteArray());
        }
    }
    addBytes(QByteArray("\r\n--") + boundary + "\r\n");
}

void PostBody::addFileField(const QString& name, const QUrl& file) {
    auto content = std::make_unique<QFile>(file.toLocalFile());
    // Opening a pipe would wait for whoever writes into it.
    if (!QFileInfo(*content).isFile() ||
        !content->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        complete_ = false;
        return;
    }
    addBytes(header(name, file.fileName()));
    const qint64 size = content->size();
    if (size == 0)
        return;
    pieces_.push_back({size_, size, std::move(content)});
    size_ += size;
}

void PostBody::addBytes(const QByteArray& bytes) {
    if (bytes.isEmpty())
        return;
    pieces_.push_back({size_, bytes.size(), bytes});
    size_ += bytes.size();
}

bool PostBody::readPiece(const Piece& piece, qint64 offset, char* data, qint64 size) {
    if (const auto* const bytes = std::get_if<QByteArray>(&piece.content)) {
        std::memcpy(data, bytes->constData() + offset, static_cast<std::size_t>(size));
        return true;
    }
    QFile& file = *std::get<std::unique_ptr<QFile>>(piece.content);
    return file.seek(offset) && file.read(data, size) == size;
}

qint64 PostBody::readData(char* data, qint64 maximum) {
    wasRead_ = true;
    qint64 position = pos();
    const qint64 end = std::min(size_, position + maximum);
    auto piece = std::upper_bound(
        pieces_.begin(), pieces_.end(), position,
        [](qint64 value, const Piece& one) { return value < one.begin + one.size; });
    qint64 done = 0;
    for (; position < end; ++piece) {
        const qint64 part = std::min(end, piece->begin + piece->size) - position;
        if (!readPiece(*piece, position - piece->begin, data + done, part))
            return -1;
        position += part;
        done += part;
    }
    return done > 0 || maximum == 0 ? done : -1;
}
