#pragma once

#include "framework/monitor/QNItemContentChangeMonitor.h"
#include "platform/loop/Timer.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

/// Tells when programs' containers may have come or gone: folders in one folder, each of which
/// holds another one sooner or later. Neither of them need exist. While the folder is missing, the
/// nearest one above it that exists is watched, and the way down is followed as folders appear;
/// nothing is ever made. Every container is watched too, whether it is complete or not, but not
/// what lies deeper. What cannot be watched is tried again after the next change elsewhere.
///
/// Main thread only. The changes come by the main queue, which the thread's run loop should serve.
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
    const std::shared_ptr<ContainerWatch*> self_; // tells handlers that are under way of the end
};
