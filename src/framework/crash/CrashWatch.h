#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Keeps folders of crash reports in order while a program runs: finishes the records that appear
/// in those that this user may write, and tells when there are new reports in any of them. Any
/// thread.
class CrashWatch {
  public:
    enum class Existing { countAsNew, areKnown };

    /// `existing` are the reports of what has happened before. `changed` is called on the main
    /// queue; not after the destruction, which happens there.
    CrashWatch(std::vector<std::string> folders, Existing existing, std::function<void()> changed);
    ~CrashWatch();
    CrashWatch(const CrashWatch&) = delete;
    CrashWatch& operator=(const CrashWatch&) = delete;

    /// Another folder. What is in it already counts as new.
    void add(const std::string& folder);

  private:
    class Worker;
    const std::shared_ptr<Worker> worker_;
};
