#pragma once

#include "framework/monitor/QNItemContentChangeMonitor.h"
#include "platform/loop/Timer.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

/// Reports when containers of programs may have appeared or disappeared: subfolders of one folder,
/// each of which holds another folder sooner or later. None of them need exist. While the folder is
/// missing, its nearest existing parent is watched, and the watch moves down as folders appear;
/// nothing is ever created. Every container is watched too, complete or not, but nothing below it.
/// What cannot be watched is tried again after the next change elsewhere.
///
/// Main thread only. The changes arrive through the main queue, which the thread's run loop should
/// serve.
class ContainerWatch {
  public:
    /// Begins to watch. `folder` is absolute. `changed` is called from the run loop, 0.1 s after
    /// the first change of a burst; it may destroy the watch.
    ContainerWatch(std::string folder, std::function<void()> changed);

    /// No call comes afterwards.
    ~ContainerWatch();
    ContainerWatch(const ContainerWatch&) = delete;
    ContainerWatch& operator=(const ContainerWatch&) = delete;

  private:
    using Paths = std::set<std::string>;

    void follow();
    Paths way() const;
    void addContainers(Paths& paths) const;
    bool watchAll(const Paths& paths);
    void watch(const std::string& path);
    void handleChange(const std::string& path, QNItemContentChangeKind kind);
    void forgetFrom(const std::string& path);

    const std::string folder_;
    std::map<std::string, QNItemContentChangeMonitor::Observer> observers_; // by path
    platform::Timer burst_;
    const std::shared_ptr<ContainerWatch*> self_; // null after destruction, for pending handlers
};
