#include "comm/ContainerWatch.h"

#include "platform/loop/RunLoop.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds burstLength{100};

bool isFolder(const fs::path& path) {
    std::error_code ignored; // then it is none for us
    return fs::is_directory(path, ignored);
}

} // namespace

ContainerWatch::ContainerWatch(std::string folder, std::function<void()> changed)
    : folder_(std::move(folder))
    , burst_(*platform::RunLoop::current(),
             [this, changed = std::move(changed)] {
                 follow();
                 changed();
             })
    , self_(std::make_shared<ContainerWatch*>(this)) {
    follow();
}

ContainerWatch::~ContainerWatch() {
    forgetFrom("/");
}

void ContainerWatch::follow() {
    // What appears before its parent is watched is only seen by looking again.
    Paths wanted = way();
    while (watchAll(wanted))
        wanted = way();
    addContainers(wanted);
    watchAll(wanted);
    std::erase_if(observers_, [&](const auto& entry) {
        const bool isOver = !wanted.contains(entry.first);
        if (isOver)
            QNItemContentChangeMonitor::removeObserver(entry.second);
        return isOver;
    });
}

/// The folder, if there is one, and the nearest one above it.
ContainerWatch::Paths ContainerWatch::way() const {
    Paths paths;
    fs::path path = folder_;
    if (isFolder(path))
        paths.insert(folder_);
    do {
        path = path.parent_path();
    } while (!isFolder(path) && path.has_relative_path());
    paths.insert(path);
    return paths;
}

void ContainerWatch::addContainers(Paths& paths) const {
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error), end; !error && entry != end;
         entry.increment(error)) {
        if (isFolder(entry->path()))
            paths.insert(entry->path());
    }
}

/// Whether there was one that has not been watched.
bool ContainerWatch::watchAll(const Paths& paths) {
    bool isAnyNew = false;
    for (const std::string& path : paths) {
        if (observers_.contains(path))
            continue;
        watch(path);
        isAnyNew = true;
    }
    return isAnyNew;
}

void ContainerWatch::watch(const std::string& path) {
    observers_[path] = QNItemContentChangeMonitor::addObserverForPath(
        path, platform::DispatchQueue::main(),
        [weak = std::weak_ptr(self_), path](const WatchedItem&, QNItemContentChangeKind kind) {
            if (const auto self = weak.lock())
                (*self)->handleChange(path, kind);
        });
}

void ContainerWatch::handleChange(const std::string& path, QNItemContentChangeKind kind) {
    // An observer stays with its folder wherever that goes; what is at the path now gets a new one.
    if (kind != QNItemContentChanged)
        forgetFrom(path);
    if (kind != QNItemNotMonitored && !burst_.isActive())
        burst_.start(burstLength);
}

/// The observers of a folder and of what lies below it.
void ContainerWatch::forgetFrom(const std::string& path) {
    const std::string inside = path.ends_with('/') ? path : path + '/';
    std::erase_if(observers_, [&](const auto& entry) {
        const bool isOver = entry.first == path || entry.first.starts_with(inside);
        if (isOver)
            QNItemContentChangeMonitor::removeObserver(entry.second);
        return isOver;
    });
}
