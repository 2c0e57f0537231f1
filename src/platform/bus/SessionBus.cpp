#include "platform/bus/SessionBus.h"

#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/SystemLog.h"

#include <QDBusConnectionInterface>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int patience = 2; // seconds

QByteArray busAddress() {
    QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const std::string folder = runtimeDirectory();
    if (address.isEmpty() && !folder.empty() && ::access((folder + "/bus").c_str(), F_OK) == 0)
        return "unix:path=" + QByteArray::fromStdString(folder) + "/bus";
    return address;
}

/// The name of the socket that an address stands for, an abstract one beginning with NUL; nothing
/// for other kinds of address.
std::optional<QByteArray> socketName(const QByteArray& address) {
    const QByteArray first =
        address.left(address.indexOf(';') < 0 ? address.size() : address.indexOf(';'));
    if (!first.startsWith("unix:"))
        return std::nullopt;
    for (const QByteArray& part : first.mid(5).split(',')) {
        const QByteArray value = QByteArray::fromPercentEncoding(part.mid(part.indexOf('=') + 1));
        if (part.startsWith("path="))
            return value;
        if (part.startsWith("abstract="))
            return '\0' + value;
    }
    return std::nullopt;
}

/// Begins the handshake of a client, which a bus that works answers at once.
bool answersHandshake(const QByteArray& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(name.size()) >= sizeof address.sun_path)
        return true; // not ours to judge
    std::memcpy(address.sun_path, name.data(), static_cast<std::size_t>(name.size()));
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval bound{.tv_sec = patience, .tv_usec = 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &bound, sizeof bound);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) +
                                               static_cast<std::size_t>(name.size()));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), length) != 0)
        return false;
    const QByteArray greeting =
        '\0' + QByteArray("AUTH EXTERNAL ") + QByteArray::number(::geteuid()).toHex() + "\r\n";
    std::array<char, 64> answer{};
    return ::send(socket.get(), greeting.data(), static_cast<std::size_t>(greeting.size()),
                  MSG_NOSIGNAL) == greeting.size() &&
           ::recv(socket.get(), answer.data(), answer.size(), 0) > 0;
}

bool answers(const char* bus, const QByteArray& address) {
    const auto name = socketName(address);
    if (!name || answersHandshake(*name))
        return true;
    systemLog(LogPriority::warning, "The %s bus doesn't answer; going on without it", bus);
    return false;
}

/// Whether a bus may be there: a missing socket is not an error.
bool hasSystemBus() {
    QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    if (address.isEmpty())
        address = "unix:path=/run/dbus/system_bus_socket";
    const auto name = socketName(address);
    const bool isFile = name && name->startsWith('/');
    return (!isFile || ::access(name->constData(), F_OK) == 0) && answers("system", address);
}

} // namespace

QDBusConnection sessionBus() {
    static QByteArray askedAddress;
    static bool isAnswering = true;
    const QByteArray address = busAddress();
    if (address != askedAddress) {
        isAnswering = answers("session", address);
        askedAddress = address;
    }
    if (!isAnswering)
        return QDBusConnection(QStringLiteral("no session bus"));
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && bus.interface())
        bus.interface()->setTimeout(patience * 1000);
    return bus;
}

QDBusConnection systemBus() {
    static const bool isAnswering = hasSystemBus();
    return isAnswering ? QDBusConnection::systemBus()
                       : QDBusConnection(QStringLiteral("no system bus"));
}

} // namespace platform
