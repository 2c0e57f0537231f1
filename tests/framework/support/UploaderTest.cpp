#include "HttpServer.h"
#include "framework/support/PostBody.h"
#include "framework/support/QNUploader.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ChildProcess.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <random>
#include <stdexcept>

using Behaviour = HttpServer::Behaviour;
using support::waitUntil;

namespace {

const QByteArray separator = "\r\n--0xKhTmLbOuNdArY\r\n";

QByteArray bodyOf(const QVariantMap& fields) {
    PostBody body(fields);
    EXPECT_TRUE(body.open(QIODevice::ReadOnly));
    QByteArray bytes = body.readAll();
    EXPECT_EQ(bytes.size(), body.size());
    return bytes;
}

class Uploader : public testing::Test {
  protected:
    /// Begins an upload whose end the fields below show.
    void upload(const QVariantMap& fields, const QString& url) {
        proxy = QNUploader::uploadPostData(
            fields, QUrl(url), [this](double fraction) { fractions.push_back(fraction); },
            [this](const std::optional<QByteArray>& answer) {
                reply = answer;
                ++ends;
                waiting.quit();
            });
    }
    /// As the toolkit's own loop waits, which is much faster for many bytes than waitUntil().
    void waitForTheEnd() {
        QTimer::singleShot(5 * support::patience, &waiting, &QEventLoop::quit);
        waiting.exec();
        EXPECT_EQ(ends, 1);
    }
    std::optional<QByteArray> uploadAndWait(const QVariantMap& fields, const QString& url) {
        ends = 0;
        upload(fields, url);
        waitForTheEnd();
        return reply;
    }

    QString write(const QString& name, qint64 size) {
        const std::filesystem::path path = folder.path() / name.toStdString();
        std::mt19937 random; // without a seed: the same bytes each time
        std::string block(1U << 20U, '\0');
        for (char& byte : block)
            byte = static_cast<char>(random());
        std::ofstream file(path, std::ios::binary);
        for (qint64 left = size; left > 0; left -= static_cast<qint64>(block.size()))
            file.write(block.data(), std::min(left, static_cast<qint64>(block.size())));
        return QString::fromStdString(path);
    }

    const support::PrivateFolder folder;
    support::SystemLogRecorder log;
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue{loop};
    const platform::RunLoopNotifier notifier{loop};
    std::shared_ptr<QNUploaderProxy> proxy;
    QEventLoop waiting;
    std::vector<double> fractions;
    std::optional<QByteArray> reply;
    int ends = 0;
};

} // namespace

TEST_F(Uploader, WritesEachKindOfField) {
    const QString file = write(QStringLiteral("re\"port.txt"), 0);
    QFile(file).resize(0);
    std::ofstream(file.toStdString()) << "content";
    const auto part = [](const QByteArray& names, const QByteArray& content) {
        return "Content-Disposition: form-data; name=" + names + "\r\n\r\n" + content + separator;
    };
    const auto fileOf = [](const QVariant& name, const QVariant& data) {
        return QVariantMap{{QNUploader::postFileName, name}, {QNUploader::postFileData, data}};
    };
    const struct {
        QString key;
        QVariant value;
        QByteArray body;
    } cases[] = {
        {"a", "x", part("\"a\"", "x")},
        {"a", QString::fromUtf8("grün"), part("\"a\"", "grün")},
        {"a", -12, part("\"a\"", "-12")},
        {"a", 18446744073709551615ULL, part("\"a\"", "18446744073709551615")},
        {"a", 0.1, part("\"a\"", "0.1")},
        {"a", true, part("\"a\"", "1")},
        {"a", QByteArray("\0\r\n", 3), part("\"a\"", QByteArray("\0\r\n", 3))},
        {"q\"r\nn", "x", part("\"q%22r%0An\"", "x")},
        {"a", QUrl::fromLocalFile(file), part("\"a\"; filename=\"re%22port.txt\"", "content")},
        {"a", QUrl("https://example.org/x"), ""},
        {"file", fileOf("n.xar", QByteArray("d")), part("\"file\"; filename=\"n.xar\"", "d")},
        {"file", fileOf("n.xar", {}), separator},
        {"file", fileOf({}, QByteArray("d")), separator},
        {"a", QVariantList{1}, separator},
    };
    for (const auto& one : cases)
        EXPECT_EQ(bodyOf({{one.key, one.value}}), "--0xKhTmLbOuNdArY\r\n" + one.body);
    EXPECT_EQ(bodyOf({{"b", "2"}, {"a", "1"}}),
              "--0xKhTmLbOuNdArY\r\n" + part("\"a\"", "1") + part("\"b\"", "2"));
}

TEST_F(Uploader, BodyCanBeReadFromAnyPlace) {
    const QVariantMap fields{
        {"a", "x"}, {"b", QUrl::fromLocalFile(write("file", 5000))}, {"c", QByteArray(3000, 'c')}};
    const QByteArray whole = bodyOf(fields);
    PostBody body(fields);
    ASSERT_TRUE(body.open(QIODevice::ReadOnly));
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
        const auto from = static_cast<qint64>(random() % static_cast<std::size_t>(whole.size()));
        const auto count = static_cast<qint64>(random() % 4000);
        ASSERT_TRUE(body.seek(from));
        ASSERT_EQ(body.read(count), whole.mid(from, count)) << from << " " << count;
    }
}

TEST_F(Uploader, HandsTheReplyOverWhateverItsStatus) {
    const struct {
        QByteArray status;
        QByteArray body;
        std::optional<QByteArray> reply;
    } cases[] = {
        {"200 OK", "true", "true"},
        {"200 OK", "true\n", "true\n"},
        {"200 OK", "", ""},
        {"413 Payload Too Large", "too large", "too large"},
        {"404 Not Found", "what?", "what?"},
        {"500 Internal Server Error", "oh", "oh"},
        {"302 Found", "true", std::nullopt},
        {"308 Permanent Redirect", "true", std::nullopt},
    };
    for (const auto& one : cases) {
        HttpServer server(Behaviour::answer,
                          HttpServer::replyOf(one.status, one.body, "Location: /other\r\n"));
        EXPECT_EQ(uploadAndWait({{"a", "x"}}, server.url()), one.reply) << one.status.toStdString();
        EXPECT_EQ(server.requests(), 1);
        EXPECT_EQ(server.body(), bodyOf({{"a", "x"}}));
        EXPECT_TRUE(server.head().startsWith("POST /resources/supportlogs/api.php HTTP/1.1\r\n"));
        EXPECT_TRUE(server.head().contains(
            "\r\nContent-Type: multipart/form-data; boundary=0xKhTmLbOuNdArY\r\n"))
            << server.head().toStdString();
    }
}

TEST_F(Uploader, BrokenConnectionsAreFailures) {
    for (const Behaviour behaviour :
         {Behaviour::breakOffAtOnce, Behaviour::breakOffAfterBody, Behaviour::breakOffMidway}) {
        HttpServer server(behaviour, "HTTP/1.1 200 OK\r\nContent-Length: 400\r\n\r\ntrue");
        EXPECT_EQ(uploadAndWait({{"a", QByteArray(1000, 'x')}}, server.url()), std::nullopt);
        EXPECT_LE(server.received(), 1000 + 200) << "the body was sent again";
    }
    HttpServer server(Behaviour::answer,
                      HttpServer::replyOf("200 OK", QByteArray((1 << 20) + 1, 'x')));
    EXPECT_EQ(uploadAndWait({{"a", "x"}}, server.url()), std::nullopt) << "a reply without end";
    const QString nobody = server.url();
    server.close();
    EXPECT_EQ(uploadAndWait({{"a", "x"}}, nobody), std::nullopt);
}

TEST_F(Uploader, TakesAnAnswerBeforeTheBodyIsSent) {
    HttpServer server(Behaviour::answerAtOnce,
                      HttpServer::replyOf("413 Payload Too Large", "too large"));
    EXPECT_EQ(uploadAndWait({{"a", QByteArray(20 << 20, 'x')}}, server.url()), "too large");
}

TEST_F(Uploader, RefusesWhatItCannotSendSafely) {
    const QString missing = QString::fromStdString(folder.path() / "missing");
    const struct {
        QVariantMap fields;
        QString url;
    } cases[] = {
        {{{"a", "x"}}, "http://example.invalid/"},
        {{{"a", "x"}}, "http://localhost.example.invalid/"},
        {{{"a", "x"}}, "ftp://127.0.0.1/"},
        {{{"a", "x"}}, ""},
        {{{"a", QUrl::fromLocalFile(missing)}}, "http://127.0.0.1:1/"},
        {{{"a", QUrl("file:///dev/zero")}}, "http://127.0.0.1:1/"},
    };
    for (const auto& one : cases) {
        log.clear();
        EXPECT_EQ(uploadAndWait(one.fields, one.url), std::nullopt);
        EXPECT_TRUE(log.contains("Failed to create connection to " + one.url.toStdString()));
    }
}

TEST_F(Uploader, ReportsProgressUpToTheEnd) {
    HttpServer server(Behaviour::readSlowly, HttpServer::replyOf("200 OK", "true"));
    const QVariantMap fields{{"a", QUrl::fromLocalFile(write("file", 8 << 20))}};
    EXPECT_EQ(uploadAndWait(fields, server.url()), "true");
    ASSERT_GE(fractions.size(), 3U);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_GT(fractions.front(), 0.0);
    EXPECT_LT(fractions.front(), 1.0);
    EXPECT_EQ(fractions.back(), 1.0);
    EXPECT_EQ(server.body(), bodyOf(fields));
}

TEST_F(Uploader, GivesUpAfterAMinuteWithoutMovement) {
    for (const Behaviour behaviour : {Behaviour::readNothing, Behaviour::neverAnswer}) {
        support::ManualClock clock;
        ends = 0;
        fractions.clear();
        HttpServer server(behaviour, {});
        upload({{"a", QByteArray(1 << 20, 'x')}}, server.url());
        ASSERT_TRUE(waitUntil([&] { return !fractions.empty(); }));
        if (behaviour == Behaviour::neverAnswer) {
            ASSERT_TRUE(waitUntil([&] { return fractions.back() == 1.0; }));
        }
        clock.advance(QNUploader::longestStandstill - std::chrono::seconds(1));
        loop.turn();
        support::serveEvents();
        if (behaviour == Behaviour::neverAnswer) {
            EXPECT_EQ(ends, 0);
        }
        clock.advance(QNUploader::longestStandstill);
        loop.turn();
        EXPECT_TRUE(waitUntil([this] { return ends == 1; }));
        EXPECT_EQ(reply, std::nullopt);
    }
}

TEST_F(Uploader, CanBeCancelledAtAnyTime) {
    const QVariantMap fields{{"a", QByteArray(20 << 20, 'x')}};
    const struct {
        Behaviour behaviour;
        double sent; ///< cancels when so much has been
    } cases[] = {{Behaviour::answer, -1},
                 {Behaviour::readNothing, 0},
                 {Behaviour::readSlowly, 0.01},
                 {Behaviour::neverAnswer, 1}};
    for (const auto& one : cases) {
        ends = 0;
        fractions.assign(1, 0.0);
        HttpServer server(one.behaviour, HttpServer::replyOf("200 OK", "true"));
        upload(fields, server.url());
        if (one.sent >= 0) {
            ASSERT_TRUE(
                waitUntil([&] { return server.requests() > 0 && fractions.back() >= one.sent; }));
        }
        proxy->cancel();
        EXPECT_TRUE(waitUntil([this] { return ends > 0; }));
        EXPECT_EQ(reply, std::nullopt);
        proxy->cancel();
        support::serveEvents();
        EXPECT_EQ(ends, 1);
    }
    HttpServer server(Behaviour::answer, HttpServer::replyOf("200 OK", "true"));
    EXPECT_EQ(uploadAndWait({{"a", "x"}}, server.url()), "true");
    proxy->cancel();
    support::serveEvents();
    EXPECT_EQ(ends, 1) << "it has finished";
}

TEST_F(Uploader, LogsExceptionsOfBlocks) {
    HttpServer server(Behaviour::answer, HttpServer::replyOf("200 OK", "true"));
    proxy = QNUploader::uploadPostData(
        {{"a", "x"}}, QUrl(server.url()), [](double) { throw std::runtime_error("progress"); },
        [](const auto&) { throw std::runtime_error("completion"); });
    EXPECT_TRUE(waitUntil([this] { return log.contains("completion"); }));
    EXPECT_TRUE(log.contains("progress"));
}

namespace {

/// The peak of this process's memory since the last call, in bytes.
qint64 peakMemory() {
    std::ifstream status("/proc/self/status");
    qint64 peak = 0;
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            peak = std::stoll(line.substr(6)) * 1024;
    }
    std::ofstream("/proc/self/clear_refs") << "5";
    return peak;
}

/// Sanitizers do.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool keepsFreedMemory = true;
#else
constexpr bool keepsFreedMemory = false;
#endif

/// The port that a program prints, as in "Serving on 127.0.0.1 port 1234".
int portOf(support::ChildProcess& server, const std::string& before) {
    std::string output;
    EXPECT_TRUE(waitUntil([&] {
        output = server.output();
        const std::size_t found = output.find(before);
        return found != std::string::npos && output.find('\n', found) != std::string::npos;
    })) << output;
    return std::stoi(output.substr(output.find(before) + before.size()));
}

int freePort() {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// A server of others that answers with the fields and files of the form as JSON.
class FormServer {
  public:
    explicit FormServer(const support::PrivateFolder& folder, bool php) {
        php ? startPhp(folder) : startPython(folder);
    }

    QString url() const { return QStringLiteral("http://127.0.0.1:%1/form").arg(port_); }

  private:
    void startPhp(const support::PrivateFolder& folder) {
        std::ofstream(folder.path() / "form.php") << R"(<?php
            $found = $_POST;
            foreach ($_FILES as $field => $file)
                $found[$field] = $file['name'] . ' ' . $file['error'] . ' ' .
                    md5_file($file['tmp_name']);
            echo json_encode($found);)";
        port_ = freePort();
        const std::string address = "127.0.0.1:" + std::to_string(port_);
        server_.emplace(std::vector<std::string>{"php", "-d", "upload_max_filesize=400M", "-d",
                                                 "post_max_size=400M", "-d",
                                                 "upload_tmp_dir=" + folder.path().string(), "-S",
                                                 address, (folder.path() / "form.php").string()});
        EXPECT_TRUE(waitUntil([&] {
            return server_->output().find("started") != std::string::npos;
        })) << server_->output();
    }

    void startPython(const support::PrivateFolder& folder) {
        std::ofstream(folder.path() / "form.py") << R"(
import cgi, hashlib, http.server, json
class Handler(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        form = cgi.FieldStorage(fp=self.rfile, headers=self.headers,
                                environ={'REQUEST_METHOD': 'POST'})
        found = {}
        for field in form.list:
            if field.filename:
                digest = hashlib.md5()
                while block := field.file.read(1 << 20):
                    digest.update(block)
                found[field.name] = '%s 0 %s' % (field.filename, digest.hexdigest())
            elif field.name:
                found[field.name] = field.value
        reply = json.dumps(found).encode()
        self.send_response(200)
        self.send_header('Content-Length', str(len(reply)))
        self.end_headers()
        self.wfile.write(reply)
server = http.server.HTTPServer(('127.0.0.1', 0), Handler)
print('port %d' % server.server_port, flush=True)
server.serve_forever()
)";
        server_.emplace(std::vector<std::string>{"python3", "-W", "ignore",
                                                 (folder.path() / "form.py").string()});
        port_ = portOf(*server_, "port ");
    }

    std::optional<support::ChildProcess> server_;
    int port_ = 0;
};

} // namespace

TEST_F(Uploader, DoesNotTrustUnknownCertificates) {
    const std::string key = folder.path() / "key.pem";
    const auto made = support::runCommand(
        {"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost",
         "-addext", "subjectAltName=DNS:localhost", "-keyout", key, "-out", key + ".crt"});
    ASSERT_EQ(made.status, 0) << made.output;
    support::ChildProcess server({"python3", "-c", R"(
import http.server, ssl, sys
class Handler(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        print('taken', flush=True)
server = http.server.HTTPServer(('127.0.0.1', 0), Handler)
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[2], sys.argv[1])
server.socket = context.wrap_socket(server.socket, server_side=True)
print('port %d' % server.server_port, flush=True)
server.serve_forever()
)",
                                  key, key + ".crt"});
    const int port = portOf(server, "port ");
    const QString url = QStringLiteral("https://localhost:%1/").arg(port);
    EXPECT_EQ(uploadAndWait({{"a", "x"}}, url), std::nullopt);
    EXPECT_EQ(server.output().find("taken"), std::string::npos);
}

TEST_F(Uploader, ServersOfOthersUnderstandTheRequest) {
    constexpr qint64 size = 200LL << 20U;
    const QString file = write("large.bin", size);
    const auto digest = support::runCommand({"md5sum", file.toStdString()});
    const QByteArray expected = "large.bin 0 " + QByteArray(digest.output.c_str(), 32);
    for (const bool php : {true, false}) {
        SCOPED_TRACE(php ? "PHP" : "Python");
        const FormServer server(folder, php);
        ends = 0;
        const qint64 before = (peakMemory(), peakMemory());
        upload({{"comment", QString::fromUtf8("grün")},
                {"file", QUrl::fromLocalFile(file)},
                {"small", QVariantMap{{QNUploader::postFileName, "n"},
                                      {QNUploader::postFileData, QByteArray("d")}}}},
               server.url());
        waitForTheEnd();
        const qint64 used = peakMemory() - before;
        EXPECT_TRUE(keepsFreedMemory || used < 20 << 20) << "the file is in memory: " << used;
        ASSERT_TRUE(reply);
        const QJsonObject found = QJsonDocument::fromJson(*reply).object();
        EXPECT_EQ(found.value("comment").toString(), QString::fromUtf8("grün"))
            << reply->toStdString();
        EXPECT_EQ(found.value("file").toString().toUtf8(), expected) << reply->toStdString();
        EXPECT_EQ(found.value("small").toString().left(4), "n 0 ") << reply->toStdString();
    }
}
