#include "framework/support/QNUploader.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNApplication.h"
#include "framework/support/PostBody.h"

#include "platform/base/ExceptionReport.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"

#include <QHostAddress>
#include <QNetworkRequest>
#include <QPointer>

#include <utility>

namespace {

constexpr qsizetype largestReply = qsizetype{1} << 20U;

bool isUsable(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty())
        return false;
    return url.scheme() == QLatin1String("https") ||
           (url.scheme() == QLatin1String("http") && QNUploader::isThisMachine(url.host()));
}

/// Whether the server's whole answer has arrived, even if it is that something is wrong.
bool hasAnswer(const QNetworkReply& reply) {
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid() || status.toInt() / 100 == 3)
        return false;
    const QNetworkReply::NetworkError error = reply.error();
    const bool aboutContent =
        error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError;
    const bool aboutServer =
        error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError;
    // A body that the server wants once more is at its end by then.
    return error == QNetworkReply::NoError || aboutServer ||
           (aboutContent && error != QNetworkReply::ContentReSendError);
}

} // namespace

QNUploaderProxy::QNUploaderProxy(ProgressHandler progress, CompletionHandler completion)
    : progressHandler_(std::move(progress)), completionHandler_(std::move(completion)) {}

QNUploaderProxy::~QNUploaderProxy() = default;

void QNUploaderProxy::begin(const QVariantMap& postData, const QUrl& url) {
    if (!cancelled_)
        uploader_ = QNUploader::withURL(url, postData, *this);
    if (!uploader_)
        finish(std::nullopt);
}

void QNUploaderProxy::cancel() {
    cancelled_ = true;
    if (uploader_)
        uploader_->cancel();
}

void QNUploaderProxy::cancelSilently() {
    progressHandler_ = nullptr;
    completionHandler_ = nullptr;
    cancel();
}

void QNUploaderProxy::uploaderProgress(QNUploader& /*uploader*/, double fraction) {
    const ProgressHandler progress = progressHandler_; // it may cancel
    if (progress)
        platform::guarded(kExceptionInUploadProgress, [&] { progress(fraction); });
}

void QNUploaderProxy::uploaderDidFinishWithReply(QNUploader& /*uploader*/,
                                                 const std::optional<QByteArray>& reply) {
    finish(reply);
}

void QNUploaderProxy::finish(const std::optional<QByteArray>& reply) {
    const auto self = shared_from_this();
    const CompletionHandler completion = std::exchange(completionHandler_, nullptr);
    if (completion)
        platform::guarded(kExceptionInUploadCompletion, [&] { completion(reply); });
    progressHandler_ = nullptr;
    if (uploader_)
        uploader_.release()->deleteLater(); // a function of it is still running
}

bool QNUploader::isThisMachine(const QString& host) {
    return host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 ||
           QHostAddress(host).isLoopback();
}

std::shared_ptr<QNUploaderProxy>
QNUploader::uploadPostData(const QVariantMap& postData, const QUrl& url,
                           QNUploaderProxy::ProgressHandler progress,
                           QNUploaderProxy::CompletionHandler completion) {
    auto proxy = std::make_shared<QNUploaderProxy>(std::move(progress), std::move(completion));
    platform::DispatchQueue::main()->async(
        [proxy, postData, url]() mutable { proxy->begin(postData, url); });
    return proxy;
}

std::shared_ptr<QNUploaderProxy>
QNUploader::uploadPostData(const QVariantMap& postData, const QUrl& url,
                           QNUploaderProxy::CompletionHandler completion) {
    return uploadPostData(postData, url, {}, std::move(completion));
}

std::unique_ptr<PostBody> QNUploader::setPostData(const QVariantMap& postData,
                                                  QNetworkRequest& request) {
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QByteArray("multipart/form-data; boundary=") + PostBody::boundary);
    return std::make_unique<PostBody>(postData);
}

std::unique_ptr<QNUploader> QNUploader::withURL(const QUrl& url, const QVariantMap& postData,
                                                QNUploaderDelegate& delegate) {
    QNetworkRequest request(url);
    auto body = setPostData(postData, request);
    // A POST that is redirected would become a GET, whose success says nothing.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    if (!isUsable(url) || !body->open(QIODevice::ReadOnly)) {
        QNLog(1, "Failed to create connection to %@", url.toString(QUrl::RemoveUserInfo));
        return nullptr;
    }
    return std::unique_ptr<QNUploader>(new QNUploader(request, std::move(body), delegate));
}

QNUploader::QNUploader(const QNetworkRequest& request, std::unique_ptr<PostBody> body,
                       QNUploaderDelegate& delegate)
    : delegate_(&delegate)
    , body_(std::move(body))
    , connection_(manager_.post(request, body_.get()))
    , standstill_(std::in_place, *platform::RunLoop::current(), [this] { fail(); }) {
    connect(connection_, &QNetworkReply::readyRead, this, &QNUploader::receive);
    connect(connection_, &QNetworkReply::uploadProgress, this, &QNUploader::report);
    connect(connection_, &QNetworkReply::finished, this, &QNUploader::loadingHasFinished);
    standstill_->start(longestStandstill);
}

QNUploader::~QNUploader() {
    connection_->disconnect(this);
    connection_->abort(); // it must not read the body any more
}

void QNUploader::receive() {
    if (delegate_ == nullptr)
        return;
    standstill_->start(longestStandstill);
    receivedData_ += connection_->read(largestReply + 1 - receivedData_.size());
    if (receivedData_.size() > largestReply)
        fail();
}

void QNUploader::report(qint64 sent, qint64 total) {
    if (delegate_ == nullptr || total <= 0)
        return;
    standstill_->start(longestStandstill);
    delegate_->uploaderProgress(*this, static_cast<double>(sent) / static_cast<double>(total));
}

void QNUploader::loadingHasFinished() {
    receive();
    if (hasAnswer(*connection_))
        finish(receivedData_);
    else
        fail();
}

void QNUploader::cancel() {
    platform::DispatchQueue::main()->async([uploader = QPointer<QNUploader>(this)] {
        if (uploader)
            uploader->fail();
    });
}

void QNUploader::fail() {
    receivedData_.clear();
    finish(std::nullopt);
}

void QNUploader::finish(const std::optional<QByteArray>& reply) {
    QNUploaderDelegate* const delegate = std::exchange(delegate_, nullptr);
    if (delegate == nullptr)
        return;
    standstill_.reset();
    connection_->disconnect(this);
    connection_->abort();
    delegate->uploaderDidFinishWithReply(*this, reply);
}
