#pragma once

#include "framework/support/QNSupportLogStore.h"

#include "platform/base/Mutex.h"

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

class Redactor;

/// The collecting of one support report: runs all collectors at once on the global queue, then the
/// last one, and delivers the result on the main queue. Lives until its blocks have run. begin()
/// and cancel() on the main thread.
class SupportCollection : public std::enable_shared_from_this<SupportCollection> {
  public:
    using Collector = std::function<void(QNSupportLogStore& store)>;

    struct Plan {
        QString product;
        QDateTime date;
        bool isCrashReport = false;
        bool forReview = false; ///< keeps the entries instead of writing an archive
        std::shared_ptr<Redactor> redactor;
        bool knowsFacts = false; ///< the redactor need not learn those of this machine
        std::vector<Collector> collectors;
        Collector last;                                ///< after all others; may be null
        std::function<void(double fraction)> progress; ///< on the main queue
        /// On the main queue: the form with the archive, and the entries if they were kept.
        std::function<void(const QVariantMap& form, std::vector<SupportEntry> entries)> done;
    };

    explicit SupportCollection(Plan plan);

    void begin();

    /// No collector begins and nobody is called any more.
    void cancel() noexcept { cancelled_ = true; }

  private:
    void start();
    void run(const Collector& collector);
    void collectorHasFinished();
    void finish();
    std::size_t count() const noexcept;

    Plan plan_;
    std::unique_ptr<QNSupportLogStore> store_;
    std::atomic<std::size_t> unfinished_{0};
    std::atomic<bool> cancelled_{false};
    std::size_t finished_ = 0; // main thread
};
