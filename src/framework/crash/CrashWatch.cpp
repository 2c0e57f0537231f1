#include "framework/crash/CrashWatch.h"

#include "framework/crash/CrashFinisher.h"

#include "platform/crash/CrashFolder.h"
#include "platform/files/PathsWatch.h"
#include "platform/loop/DispatchQueue.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;
using platform::DispatchQueue;

/// Works on a queue of its own, and lives until its last block there has run.
class CrashWatch::Worker : public std::enable_shared_from_this<Worker> {
  public:
    explicit Worker(std::function<void()> changed)
        : changed_(std::make_shared<const std::function<void()>>(std::move(changed))) {}

    void begin(std::vector<std::string> folders, Existing existing) {
        queue_->async([self = shared_from_this(), folders = std::move(folders), existing] {
            self->folders_ = folders;
            std::erase(self->folders_, std::string());
            if (self->finish() && existing == Existing::countAsNew)
                self->tell();
        });
    }

    void add(const std::string& folder) {
        queue_->async([self = shared_from_this(), folder] {
            if (folder.empty() || std::ranges::find(self->folders_, folder) != self->folders_.end())
                return;
            self->folders_.push_back(folder);
            self->look();
        });
    }

    /// On the main thread.
    void end() {
        changed_.reset();
        queue_->async([self = shared_from_this()] { self->watch_.reset(); });
    }

  private:
    void look() {
        if (finish())
            tell();
    }

    void tell() {
        DispatchQueue::main()->async([self = shared_from_this()] {
            if (const auto changed = self->changed_)
                (*changed)();
        });
    }

    /// Whether there are new reports.
    bool finish() {
        if (!watch_)
            watch_.emplace(queue_, [weak = weak_from_this()] {
                if (const auto self = weak.lock())
                    self->look();
            });
        while (watch_->follow(folders_)) {
        }
        bool isAnyNew = false;
        for (const std::string& folder : folders_) {
            const CrashFinisher finisher(folder);
            if (::access(folder.c_str(), W_OK) == 0 && finisher.hasRecords())
                finisher.finish();
            isAnyNew |= hasNewReports(folder);
        }
        return isAnyNew;
    }

    bool hasNewReports(const std::string& folder) {
        bool isAnyNew = false;
        std::error_code error;
        for (fs::directory_iterator at(folder, error), end; !error && at != end;
             at.increment(error)) {
            const std::string path = at->path();
            if (path.ends_with(platform::crashReportEnding))
                isAnyNew |= known_.insert(path).second;
        }
        return isAnyNew;
    }

    const std::shared_ptr<DispatchQueue> queue_ =
        DispatchQueue::makeSerial("com.quarnel.crashreports");
    std::shared_ptr<const std::function<void()>> changed_; // main thread
    std::vector<std::string> folders_;                     // these three: in the queue
    std::set<std::string> known_;
    std::optional<platform::PathsWatch> watch_;
};

CrashWatch::CrashWatch(std::vector<std::string> folders, Existing existing,
                       std::function<void()> changed)
    : worker_(std::make_shared<Worker>(std::move(changed))) {
    worker_->begin(std::move(folders), existing);
}

CrashWatch::~CrashWatch() {
    worker_->end();
}

void CrashWatch::add(const std::string& folder) {
    worker_->add(folder);
}
