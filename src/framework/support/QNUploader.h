#pragma once

#include "platform/base/MonotonicClock.h"
#include "platform/loop/Timer.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class PostBody;
class QNUploader;

/// Who is told about an upload. Calls come on the main thread.
class QNUploaderDelegate {
  public:
    virtual ~QNUploaderDelegate() = default;

    /// The only and last call about the end: the reply's body, or nothing if the upload failed or
    /// was cancelled. The uploader must outlive the call.
    virtual void uploaderDidFinishWithReply(QNUploader& uploader,
                                            const std::optional<QByteArray>& reply) = 0;

    /// How much of the body has been sent, 0 to 1.
    virtual void uploaderProgress(QNUploader& /*uploader*/, double /*fraction*/) {}
};

/// Keeps an upload and the blocks that it calls until it has finished; see
/// QNUploader::uploadPostData(). Main thread only.
class QNUploaderProxy final : public QNUploaderDelegate,
                              public std::enable_shared_from_this<QNUploaderProxy> {
  public:
    using ProgressHandler = std::function<void(double fraction)>;
    using CompletionHandler = std::function<void(const std::optional<QByteArray>& reply)>;

    QNUploaderProxy(ProgressHandler progress, CompletionHandler completion);
    ~QNUploaderProxy() override;

    /// Ends the upload, a little later, with no reply. Nothing happens if it has finished.
    void cancel();

    /// The same, and no block is called any more.
    void cancelSilently();

    void uploaderDidFinishWithReply(QNUploader& uploader,
                                    const std::optional<QByteArray>& reply) override;
    void uploaderProgress(QNUploader& uploader, double fraction) override;

  private:
    friend class QNUploader;

    void begin(const QVariantMap& postData, const QUrl& url);
    void finish(const std::optional<QByteArray>& reply);

    ProgressHandler progressHandler_;
    CompletionHandler completionHandler_;
    std::unique_ptr<QNUploader> uploader_;
    bool cancelled_ = false;
};

/// Sends form fields and files to a web server as one multipart/form-data request, and hands the
/// body of the reply over, whatever its HTTP status is. A failure is no reply: a redirection, a
/// broken connection or one on which 60 s long nothing moves, a certificate that is not trusted, a
/// reply over 1 MiB. Only this machine is reached without encryption.
///
/// A field's value is a text, a number, bytes, the URL of a file, or a map with the two keys below.
/// Other URLs leave the field out; other values leave its part empty.
///
/// Main thread only, which needs its run loop and Qt's event loop.
class QNUploader final : public QObject {
    Q_OBJECT

  public:
    static inline const QString postFileName = QStringLiteral("QNUploaderPostFileName"); ///< text
    static inline const QString postFileData = QStringLiteral("QNUploaderPostFileData"); ///< bytes

    static constexpr std::chrono::seconds longestStandstill{60};

    /// Whether a host is the machine itself, which is reached without encryption.
    [[nodiscard]] static bool isThisMachine(const QString& host);

    /// Begins an upload at the main queue's next turn. The result cancels it; it need not be kept.
    static std::shared_ptr<QNUploaderProxy>
    uploadPostData(const QVariantMap& postData, const QUrl& url,
                   QNUploaderProxy::ProgressHandler progress,
                   QNUploaderProxy::CompletionHandler completion);
    static std::shared_ptr<QNUploaderProxy>
    uploadPostData(const QVariantMap& postData, const QUrl& url,
                   QNUploaderProxy::CompletionHandler completion);

    /// Begins an upload. Null, with a line in the log, if the URL cannot be used or a file of the
    /// fields cannot be read.
    [[nodiscard]] static std::unique_ptr<QNUploader>
    withURL(const QUrl& url, const QVariantMap& postData, QNUploaderDelegate& delegate);

    /// Without a call of the delegate.
    ~QNUploader() override;

    /// Ends the upload, at the main queue's next turn, with no reply.
    void cancel();

    /// Prepares a request and returns its body.
    [[nodiscard]] static std::unique_ptr<PostBody> setPostData(const QVariantMap& postData,
                                                               QNetworkRequest& request);

  private:
    QNUploader(const QNetworkRequest& request, std::unique_ptr<PostBody> body,
               QNUploaderDelegate& delegate);

    void receive();
    void report(qint64 sent, qint64 total);
    void loadingHasFinished();
    void fail();
    void finish(const std::optional<QByteArray>& reply);

    QNUploaderDelegate* delegate_; // null once it has had its last call
    QByteArray receivedData_;
    const std::unique_ptr<PostBody> body_;
    QNetworkAccessManager manager_;
    QNetworkReply* connection_;                 // the manager's
    std::optional<platform::Timer> standstill_; // until the end, for the run loop may go then
};
