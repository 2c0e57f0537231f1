#include "platform/window/X11Settings.h"

#include "platform/window/X11Connection.h"

#include <QGuiApplication>
#include <QtEndian>

#include <utility>
#include <xcb/xcb.h>

namespace platform {

namespace {

using x11::atomReply;
using x11::connection;
using x11::Owned;
using x11::requestAtom;
using x11::rootWindow;
using x11::selectEvents;
using x11::sentByClient;

constexpr std::uint32_t mostWords = 1 << 16; // of a property

/// Takes numbers and texts off the front; what begins with them is as long as a multiple of four.
class Pieces {
  public:
    explicit Pieces(const QByteArray& told)
        : rest_(told), isBigEndian_(!told.isEmpty() && told.front() == '\1') {}

    /// Whether nothing has been missing yet.
    bool isWhole() const noexcept { return isWhole_; }

    void skip(qsizetype bytes) { take(bytes); }

    template <typename Number>
    Number number() {
        const QByteArrayView bytes = take(sizeof(Number));
        if (bytes.isEmpty())
            return 0;
        return isBigEndian_ ? qFromBigEndian<Number>(bytes.data())
                            : qFromLittleEndian<Number>(bytes.data());
    }

    QByteArrayView text(std::uint32_t length) {
        constexpr qsizetype unit = 4;
        const QByteArrayView bytes = take(length);
        take((unit - length % unit) % unit);
        return bytes;
    }

  private:
    QByteArrayView take(qsizetype bytes) {
        isWhole_ = isWhole_ && bytes <= rest_.size();
        if (!isWhole_)
            return {};
        const QByteArrayView taken = rest_.first(bytes);
        rest_ = rest_.sliced(bytes);
        return taken;
    }

    QByteArrayView rest_;
    const bool isBigEndian_;
    bool isWhole_ = true;
};

} // namespace

X11Settings::Texts X11Settings::textsIn(const QByteArray& told) {
    enum Kind : std::uint8_t { integer = 0, string = 1, colour = 2 };
    constexpr qsizetype beforeCount = 8; // the order of bytes and a serial number
    constexpr qsizetype colourSize = 8;
    Texts texts;
    Pieces pieces(told);
    pieces.skip(beforeCount);
    for (auto left = pieces.number<std::uint32_t>(); left > 0 && pieces.isWhole(); --left) {
        const auto kind = pieces.number<std::uint8_t>();
        pieces.skip(1);
        const QString name = QString::fromUtf8(pieces.text(pieces.number<std::uint16_t>()));
        pieces.skip(sizeof(std::uint32_t)); // when it was changed
        if (kind == string) {
            const QString text = QString::fromUtf8(pieces.text(pieces.number<std::uint32_t>()));
            if (pieces.isWhole())
                texts.insert(name, text);
        } else if (kind == integer || kind == colour) {
            pieces.skip(kind == integer ? sizeof(std::uint32_t) : colourSize);
        } else {
            break;
        }
    }
    return texts;
}

X11Settings& X11Settings::shared() {
    static auto* const settings = new X11Settings;
    return *settings;
}

/// The daemon may start later than we do; it then announces itself on the root window.
X11Settings::X11Settings() {
    if (connection() == nullptr)
        return;
    root_ = rootWindow();
    const auto selection = requestAtom("_XSETTINGS_S0");
    const auto property = requestAtom("_XSETTINGS_SETTINGS");
    const auto manager = requestAtom("MANAGER");
    selection_ = atomReply(selection);
    property_ = atomReply(property);
    manager_ = atomReply(manager);
    selectEvents(root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    qGuiApp->installNativeEventFilter(this);
    if (findDaemon())
        read();
}

X11Settings::~X11Settings() {
    if (root_ != 0 && qGuiApp != nullptr)
        qGuiApp->removeNativeEventFilter(this);
}

bool X11Settings::findDaemon() {
    const Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection(), xcb_get_selection_owner(connection(), selection_), nullptr));
    daemon_ = owner != nullptr ? owner->owner : 0;
    if (daemon_ != 0)
        selectEvents(daemon_, XCB_EVENT_MASK_PROPERTY_CHANGE);
    return daemon_ != 0;
}

void X11Settings::read() {
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection(),
        xcb_get_property(connection(), 0, daemon_, property_, property_, 0, mostWords), nullptr));
    constexpr int bits = 8;
    if (reply == nullptr || reply->format != bits)
        return;
    const auto* const told = static_cast<const char*>(xcb_get_property_value(reply.get()));
    Texts texts = textsIn({told, xcb_get_property_value_length(reply.get())});
    if (texts == texts_)
        return;
    texts_ = std::move(texts);
    Q_EMIT changed();
}

bool X11Settings::nativeEventFilter(const QByteArray& kind, void* message, qintptr* /*result*/) {
    if (kind != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    const unsigned type = event.response_type & ~sentByClient;
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (property.window == daemon_ && property.atom == property_)
            read();
    } else if (type == XCB_CLIENT_MESSAGE) {
        const auto& news = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (news.type == manager_ && news.data.data32[1] == selection_ && findDaemon())
            read();
    }
    return false;
}

} // namespace platform
