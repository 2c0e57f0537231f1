#include "framework/support/SupportCollection.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/redaction/Redactor.h"
#include "framework/support/QNUploader.h"

#include "platform/base/ExceptionReport.h"
#include "platform/loop/DispatchQueue.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

using platform::DispatchQueue;

namespace {

/// Empty if the file cannot be read.
QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("");
}

} // namespace

SupportCollection::SupportCollection(Plan plan) : plan_(std::move(plan)) {}

std::size_t SupportCollection::count() const noexcept {
    return plan_.collectors.size() + (plan_.last ? 1 : 0);
}

void SupportCollection::begin() {
    DispatchQueue::global()->async([self = shared_from_this()] { self->start(); });
}

void SupportCollection::start() {
    if (!plan_.knowsFacts)
        plan_.redactor->learn(platform::PersonalFacts::ofThisMachine());
    store_ = plan_.forReview ? std::make_unique<QNSupportLogStore>(*plan_.redactor)
                             : std::make_unique<QNSupportLogStore>(
                                   plan_.product, plan_.date, plan_.isCrashReport, *plan_.redactor);
    unfinished_ = plan_.collectors.size();
    if (plan_.collectors.empty())
        finish();
    for (const Collector& collector : plan_.collectors) {
        DispatchQueue::global()->async([self = shared_from_this(), &collector] {
            self->run(collector);
            if (--self->unfinished_ == 0)
                self->finish();
        });
    }
}

void SupportCollection::run(const Collector& collector) {
    if (!cancelled_)
        platform::guarded(kExceptionInSupportCollector, [&] { collector(*store_); });
    collectorHasFinished();
}

void SupportCollection::collectorHasFinished() {
    DispatchQueue::main()->async([self = shared_from_this()] {
        ++self->finished_;
        if (!self->cancelled_)
            self->plan_.progress(static_cast<double>(self->finished_) /
                                 static_cast<double>(self->count()));
    });
}

void SupportCollection::finish() {
    if (plan_.last)
        run(plan_.last);
    const bool isWhole = store_->close();
    QVariantMap form;
    if (!plan_.forReview && !cancelled_) {
        form.insert(QStringLiteral("file"),
                    QVariantMap{{QNUploader::postFileData,
                                 isWhole ? contentOf(store_->path()) : QByteArray("")},
                                {QNUploader::postFileName, QFileInfo(store_->path()).fileName()}});
    }
    auto entries = std::make_shared<std::vector<SupportEntry>>(store_->takeEntries());
    store_.reset();
    DispatchQueue::main()->async([self = shared_from_this(), form, entries] {
        if (!self->cancelled_)
            platform::guarded(kExceptionInSupportCallback,
                              [&] { self->plan_.done(form, std::move(*entries)); });
    });
}
