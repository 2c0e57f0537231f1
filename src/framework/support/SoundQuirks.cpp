#include "framework/support/SoundQuirks.h"

#include <QVersionNumber>

namespace {

enum class Server { pipewire, wireplumber };

struct Quirk {
    Server server;
    QVersionNumber first; ///< null: from the beginning
    QVersionNumber fixed; ///< the first version without it; null: none
    const char* meaning;
};

/// docs/support.md has the same table.
const QList<Quirk>& quirks() {
    static const QList<Quirk> all{
        {Server::pipewire,
         {},
         {0, 3, 68},
         "The server has no ramps: quick changes of a volume in other mixers can click."},
        {Server::pipewire,
         {0, 3, 76},
         {},
         "A stream can lock its volume (channelmix.lock-volumes): no mixer can set it then."},
        {Server::wireplumber,
         {},
         {0, 5, 15},
         "Programs of one media role share a stored volume: without the plug-in, a program starts "
         "at that of another one."},
        {Server::wireplumber,
         {},
         {0, 5},
         "A stream's own wish to start without its stored volume is ignored."},
        {Server::wireplumber,
         {0, 4},
         {0, 5},
         "Restarted alone, it can leave virtual outputs silent until they are made anew."},
    };
    return all;
}

bool applies(const Quirk& quirk, const QString& version) {
    const auto number = QVersionNumber::fromString(version);
    return !number.isNull() && number >= quirk.first &&
           (quirk.fixed.isNull() || number < quirk.fixed);
}

} // namespace

QStringList soundQuirks(const QString& pipewire, const QString& wireplumber) {
    QStringList found;
    for (const Quirk& quirk : quirks()) {
        const bool isOfServer = quirk.server == Server::pipewire;
        if (applies(quirk, isOfServer ? pipewire : wireplumber))
            found.append(QString::fromLatin1(quirk.meaning));
    }
    return found;
}
