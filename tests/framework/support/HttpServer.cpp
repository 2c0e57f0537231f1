#include "HttpServer.h"

#include <QTcpSocket>
#include <QTimer>

#include <utility>

namespace {

/// In a millisecond.
constexpr qint64 slowBytes = 1 << 14;

} // namespace

HttpServer::HttpServer(Behaviour behaviour, QByteArray reply)
    : behaviour_(behaviour), reply_(std::move(reply)) {
    if (!listen(QHostAddress::LocalHost))
        qFatal("cannot listen");
    connect(this, &QTcpServer::newConnection, this, &HttpServer::accept);
}

QString HttpServer::url() const {
    return QStringLiteral("http://127.0.0.1:%1/resources/supportlogs/api.php").arg(serverPort());
}

QByteArray HttpServer::replyOf(const QByteArray& statusLine, const QByteArray& body,
                               const QByteArray& headers) {
    return "HTTP/1.1 " + statusLine + "\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

void HttpServer::accept() {
    QTcpSocket* const socket = nextPendingConnection();
    ++requests_;
    if (behaviour_ == Behaviour::readNothing || behaviour_ == Behaviour::readSlowly)
        socket->setReadBufferSize(slowBytes);
    if (behaviour_ == Behaviour::readNothing)
        return;
    if (behaviour_ != Behaviour::readSlowly) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
    } else {
        auto* const timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, this, [this, socket] { read(*socket); });
        timer->start(1);
    }
}

void HttpServer::read(QTcpSocket& socket) {
    if (announced_ < 0)
        takeHead(socket);
    if (announced_ < 0 || socket.state() != QTcpSocket::ConnectedState ||
        behaviour_ == Behaviour::answerAtOnce)
        return;
    const QByteArray part =
        behaviour_ == Behaviour::readSlowly ? socket.read(slowBytes) : socket.readAll();
    received_ += part.size();
    if (keepBody_)
        body_ += part;
    if (received_ < announced_ || behaviour_ == Behaviour::neverAnswer)
        return;
    if (behaviour_ == Behaviour::breakOffAfterBody)
        breakOff(socket);
    else
        send(socket);
}

void HttpServer::takeHead(QTcpSocket& socket) {
    while (socket.canReadLine()) {
        const QByteArray line = socket.readLine();
        head_ += line;
        if (line.toLower().startsWith("content-length:"))
            announced_ = line.mid(15).trimmed().toLongLong();
        if (line != "\r\n")
            continue;
        if (behaviour_ == Behaviour::answerAtOnce)
            send(socket);
        else if (behaviour_ == Behaviour::breakOffAtOnce)
            breakOff(socket);
        return;
    }
    announced_ = -1; // the head goes on
}

/// Another connection may follow.
void HttpServer::breakOff(QTcpSocket& socket) {
    announced_ = -1;
    socket.abort();
}

void HttpServer::send(QTcpSocket& socket) {
    socket.write(reply_);
    socket.flush();
    if (behaviour_ == Behaviour::breakOffMidway)
        socket.disconnectFromHost();
}
