#include "model/PreferenceCopies.h"

#include "comm/MVComm.h"
#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/HarmlessText.h"
#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/files/SharedFolder.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/DispatchTimer.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

using platform::DispatchQueue;
using platform::FileDescriptor;
using platform::MonotonicClock;
using platform::SharedFolder;

namespace {

constexpr std::chrono::milliseconds pace{100};
constexpr std::chrono::seconds firstRetry{1}; // and each one for want of room
constexpr std::chrono::seconds slowestRetry{60};
constexpr std::chrono::seconds patience{3};
constexpr mode_t modeOfCopies = 0744;

/// Whether the operation may succeed later without any change.
bool mayPass(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EIO:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
    case EAGAIN:
    case EINTR:
    case ETIMEDOUT:
        return true;
    default:
        return false;
    }
}

bool isForWantOfRoom(int error) {
    return error == ENOSPC || error == EDQUOT;
}

struct Content {
    std::string bytes;
    int error = 0; // 0, or why they could not be read
};

Content contentOf(const fs::path& file) {
    const FileDescriptor descriptor(
        ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    Content content{{}, descriptor ? 0 : errno};
    std::array<char, 65536> part;
    while (content.error == 0) {
        const ssize_t count = ::read(descriptor.get(), part.data(), part.size());
        if (count == 0)
            break;
        if (count > 0)
            content.bytes.append(part.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            content.error = errno;
    }
    return content;
}

/// Whether it was reached within the time; also if it never will be.
bool isReached(const std::future<void>& end, std::chrono::milliseconds bound) {
    return end.wait_for(bound) == std::future_status::ready;
}

} // namespace

/// Lives until the queue has let it go.
class PreferenceCopies::Worker : public std::enable_shared_from_this<Worker> {
  public:
    using Handlers = std::vector<std::function<void()>>;

    Worker(platform::UserDefaults& defaults, fs::path file, Folders folders,
           platform::SharedFolderCalls& calls)
        : defaults_(defaults)
        , file_(std::move(file))
        , folders_(std::move(folders))
        , calls_(calls) {}

    /// Call this once, before everything else.
    void prepare() {
        const platform::ScopedLock lock(mutex_);
        timer_.emplace(queue_, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->save();
        });
    }

    void mark() {
        const platform::ScopedLock lock(mutex_);
        isRetry_ = false;
        saveAt(std::max(MonotonicClock::now(), lastSave_ + pace));
    }

    /// `done` is called on the queue.
    void saveNow(std::function<void()> done) {
        const platform::ScopedLock lock(mutex_);
        if (done)
            waiting_.push_back(std::move(done));
        isRetry_ = false;
        saveAt(MonotonicClock::time_point::min());
    }

    void close() {
        const platform::ScopedLock lock(mutex_);
        isClosed_ = true;
        due_.reset();
        waiting_.clear();
        timer_->cancel();
    }

    const std::shared_ptr<DispatchQueue>& queue() const noexcept { return queue_; }

  private:
    void saveAt(MonotonicClock::time_point time) REQUIRES(mutex_) {
        if (isClosed_ || (due_ && *due_ <= time))
            return;
        due_ = time;
        if (time > MonotonicClock::now()) {
            try {
                timer_->start(time);
                return;
            } catch (const std::exception& error) {
                platform::systemLog(platform::LogPriority::error,
                                    "Couldn't schedule copying the preferences: %s", error.what());
            }
        }
        queue_->async([self = shared_from_this()] { self->save(); });
    }

    void save() {
        Handlers waiting;
        {
            const platform::ScopedLock lock(mutex_);
            if (!due_ || *due_ > MonotonicClock::now())
                return; // an earlier block has done it
            due_.reset();
            timer_->cancel();
            lastSave_ = MonotonicClock::now();
            waiting.swap(waiting_);
            if (!std::exchange(isRetry_, false))
                copied_.clear();
        }
        mayPass_ = lacksRoom_ = false;
        if (!file_.empty()) {
            // What is written to the file later must be copied then.
            mayPass_ = !defaults_.synchronize();
            lacksRoom_ = mayPass_ && defaults_.lacksRoom();
            copyAll();
        }
        planRetry();
        for (const auto& done : waiting)
            done();
    }

    void planRetry() {
        const platform::ScopedLock lock(mutex_);
        if (lacksRoom_)
            retryDelay_ = firstRetry;
        if (mayPass_) {
            isRetry_ = !due_;
            saveAt(MonotonicClock::now() + retryDelay_);
        }
        retryDelay_ = mayPass_ ? std::min(2 * retryDelay_, slowestRetry) : firstRetry;
    }

    void copyAll() {
        Content content = contentOf(file_);
        if (content.bytes != lastBytes_)
            copied_.clear();
        std::set<std::string> targets;
        for (const std::string& folder : folders_()) {
            if (!copied_.contains(targetIn(folder)))
                copyTo(folder, content);
            targets.insert(targetIn(folder));
        }
        lastBytes_ = std::move(content.bytes);
        std::erase_if(told_, [&](const auto& each) { return !targets.contains(each.first); });
    }

    void copyTo(const std::string& folder, const Content& content) {
        const std::string target = targetIn(folder);
        const std::string name = file_.filename();
        SharedFolder place(folder, calls_);
        const SharedFolder::Outcome outcome = content.error == 0
                                                  ? place.put(name, content.bytes, modeOfCopies)
                                                  : SharedFolder::Outcome{.writing = content.error};
        if (outcome.removing != 0)
            tell(target, outcome.removing, "Couldn't remove path: " + target);
        else if (outcome.writing != 0)
            tell(target, outcome.writing, "Couldn't copy " + file_.string() + " to " + target);
        else if (outcome.mode != 0)
            tell(target, outcome.mode, "Couldn't set attrs on path: " + target);
        else
            told_.erase(target);
        if (outcome.removing != 0 || outcome.writing != 0)
            return;
        place.hide(name);
        if (outcome.mode == 0)
            copied_.insert(target);
    }

    void tell(const std::string& target, int error, const std::string& line) {
        mayPass_ = mayPass_ || mayPass(error);
        lacksRoom_ = lacksRoom_ || isForWantOfRoom(error);
        if (told_[target].emplace(error, line).second)
            platform::systemLog(platform::LogPriority::error, "%s",
                                platform::printableText(line).c_str());
    }

    std::string targetIn(const std::string& folder) const {
        return folder + "/" + file_.filename().string();
    }

    platform::UserDefaults& defaults_;
    const fs::path file_;
    const Folders folders_;
    platform::SharedFolderCalls& calls_;
    const std::shared_ptr<DispatchQueue> queue_ =
        DispatchQueue::makeSerial("com.quarnel.preference-copies");

    // The queue's blocks only.
    std::map<std::string, std::set<std::pair<int, std::string>>> told_; // by target: what is logged
    std::set<std::string> copied_; // the targets that a retry can leave alone
    std::string lastBytes_;        // what they hold
    bool mayPass_ = false;         // whether what failed is worth being tried again
    bool lacksRoom_ = false;       // whether something failed for want of room
    std::chrono::seconds retryDelay_{firstRetry};

    platform::Mutex mutex_;
    std::optional<platform::DispatchTimer> timer_ GUARDED_BY(mutex_);
    // Of the save that has not begun.
    std::optional<MonotonicClock::time_point> due_ GUARDED_BY(mutex_);
    MonotonicClock::time_point
        lastSave_ GUARDED_BY(mutex_) = MonotonicClock::time_point::min() + pace;
    bool isRetry_ GUARDED_BY(mutex_) = false; // whether that save was not requested
    Handlers waiting_ GUARDED_BY(mutex_);
    bool isClosed_ GUARDED_BY(mutex_) = false;
};

/// The queue must not look at the environment, which the main thread may change.
PreferenceCopies::Folders PreferenceCopies::standardFolders() {
    return [shared = platform::localLibraryDirectory() + "/Shared",
            containers = MVComm::containersFolder()] {
        std::vector<std::string> folders;
        std::error_code error;
        if (fs::is_directory(shared, error))
            folders.push_back(shared);
        for (const QString& library : MVComm::containerLibraries(containers))
            folders.push_back(QFile::encodeName(library).toStdString());
        return folders;
    };
}

PreferenceCopies::PreferenceCopies(platform::UserDefaults& defaults, fs::path file, Folders folders,
                                   platform::SharedFolderCalls& calls)
    : worker_(std::make_shared<Worker>(defaults, std::move(file), std::move(folders), calls)) {
    worker_->prepare();
}

PreferenceCopies::~PreferenceCopies() {
    worker_->close();
    const auto end = std::make_shared<std::promise<void>>();
    worker_->queue()->async([end] { end->set_value(); });
    if (!hangs_)
        isReached(end->get_future(), patience);
}

void PreferenceCopies::mark() {
    worker_->mark();
}

void PreferenceCopies::saveNow(std::function<void()> done) {
    if (done == nullptr)
        worker_->saveNow(nullptr);
    else
        worker_->saveNow([done = std::move(done)] { DispatchQueue::main()->async(done); });
}

bool PreferenceCopies::finish(std::chrono::milliseconds bound) {
    const auto end = std::make_shared<std::promise<void>>();
    worker_->saveNow([end] { end->set_value(); });
    hangs_ = !isReached(end->get_future(), bound);
    return !hangs_;
}
