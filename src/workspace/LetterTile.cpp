#include "workspace/LetterTile.h"

#include <QFont>
#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

namespace {

/// The first grapheme that is a letter or a number; else the first one.
QString initialOf(const QString& name) {
    QString first;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, name);
    for (qsizetype start = 0, end = finder.toNextBoundary(); end > start;
         start = end, end = finder.toNextBoundary()) {
        const QString character = name.mid(start, end - start);
        const bool isLetter = QChar::isLetterOrNumber(character.toUcs4().front());
        if (first.isEmpty() || isLetter)
            first = character;
        if (isLetter)
            return first.toUpper();
    }
    return first;
}

/// The same in every run: the hash of a QHash differs.
TileColors colorsOf(const QString& name, TileColors colors) {
    if (colors.byName.isEmpty())
        return colors;
    const QByteArray bytes = name.toUtf8();
    colors.tile = colors.byName[qChecksum(bytes) % colors.byName.size()];
    return colors;
}

class LetterTileEngine final : public QIconEngine {
  public:
    LetterTileEngine(QString letter, const TileColors& colors)
        : letter_(std::move(letter)), colors_(colors) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State /*state*/) override {
        constexpr qreal margin = 1 / 16.0;
        constexpr qreal corner = 1 / 6.0;
        constexpr qreal height = 0.55;
        constexpr qreal faded = 0.5;
        const qreal side = std::min(rect.width(), rect.height());
        QRectF tile(0, 0, side * (1 - 2 * margin), side * (1 - 2 * margin));
        tile.moveCenter(QRectF(rect).center());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setOpacity(painter->opacity() * (mode == QIcon::Disabled ? faded : 1));
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors_.tile);
        painter->drawRoundedRect(tile, side * corner, side * corner);
        QFont font = painter->font();
        font.setBold(true);
        font.setPixelSize(std::max(1, qRound(side * height)));
        painter->setFont(font);
        painter->setPen(colors_.letter);
        painter->drawText(tile, Qt::AlignCenter | Qt::TextSingleLine, letter_);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({0, 0}, size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new LetterTileEngine(*this); }

  private:
    const QString letter_;
    const TileColors colors_;
};

} // namespace

QIcon letterTile(const QString& name, const TileColors& colors) {
    return QIcon(new LetterTileEngine(initialOf(name), colorsOf(name, colors))); // which owns it
}
