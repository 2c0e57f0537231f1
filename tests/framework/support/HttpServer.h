#pragma once

#include <QByteArray>
#include <QTcpServer>

#include <functional>

class QTcpSocket;

/// A web server on this machine that answers as a test tells it to, on the thread that made it.
class HttpServer final : public QTcpServer {
    Q_OBJECT

  public:
    enum class Behaviour {
        answer,         ///< once the whole request is there
        answerAtOnce,   ///< after the head, and it never reads the body
        breakOffAtOnce, ///< after the head
        breakOffAfterBody,
        breakOffMidway, ///< promises a longer reply than it sends
        readNothing,
        readSlowly,  ///< and answers
        neverAnswer, ///< but reads all
    };

    HttpServer(Behaviour behaviour, QByteArray reply);

    QString url() const;
    QByteArray head() const { return head_; }

    /// Empty if keepBody(false) was called.
    QByteArray body() const { return body_; }
    void keepBody(bool keep) { keepBody_ = keep; }
    qint64 received() const { return received_; }
    int requests() const { return requests_; }

    /// An HTTP reply with that body.
    static QByteArray replyOf(const QByteArray& statusLine, const QByteArray& body,
                              const QByteArray& headers = {});

  private:
    void accept();
    void read(QTcpSocket& socket);
    void takeHead(QTcpSocket& socket);
    void breakOff(QTcpSocket& socket);
    void send(QTcpSocket& socket);

    const Behaviour behaviour_;
    const QByteArray reply_;
    QByteArray head_;
    QByteArray body_;
    qint64 announced_ = -1;
    qint64 received_ = 0;
    int requests_ = 0;
    bool keepBody_ = true;
};
