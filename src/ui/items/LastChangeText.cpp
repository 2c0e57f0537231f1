#include "ui/items/LastChangeText.h"

#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QDateTime>
#include <QLocale>

namespace {

QDateTime localTime(platform::WallClock::time_point time) {
    return QDateTime::fromMSecsSinceEpoch(
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count());
}

/// Without a language, one that writes the time as most do.
QLocale personsLocale() {
    const QLocale locale;
    return locale.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedKingdom)
                                           : locale;
}

QString formatOf(ChangeSource::Kind source) {
    switch (source) {
    case ChangeSource::Kind::window:
        return Texts::tr("Last changed by you here, %@");
    case ChangeSource::Kind::key:
        return Texts::tr("Last changed by you with a key, %@");
    case ChangeSource::Kind::bus:
        return Texts::tr("Last changed over the session bus, %@");
    case ChangeSource::Kind::tray:
        return Texts::tr("Last changed by you in the tray, %@");
    case ChangeSource::Kind::elsewhere:
        return Texts::tr("Last changed elsewhere, %@");
    }
    return {};
}

} // namespace

QString lastChangeText(const LastChange& change) {
    const QDateTime time = localTime(change.time);
    const QDate today = localTime(platform::WallClock::now()).date();
    const QLocale locale = personsLocale();
    return platform::formatted(formatOf(change.source),
                               time.date() == today
                                   ? locale.toString(time.time(), QLocale::ShortFormat)
                                   : locale.toString(time, QLocale::ShortFormat));
}
