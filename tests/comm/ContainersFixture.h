#pragma once

#include "CommFixture.h"
#include "framework/monitor/QNItemContentChangeMonitor.h"
#include "platform/loop/MainQueue.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"

#include <filesystem>
#include <fstream>
#include <string>

/// A home of its own, whose folders a test changes.
class ContainersFixture : public CommFixture {
  public:
    ~ContainersFixture() override { QNItemContentChangeMonitor::removeObserver(probeObserver_); }

  protected:
    ContainersFixture() {
        std::filesystem::create_directory(probe_);
        probeObserver_ = QNItemContentChangeMonitor::addObserverForPath(
            probe_, nullptr, [this](const auto&, auto) { ++probed_; });
    }

    std::filesystem::path inHome(const std::string& path) const { return home_ / path; }
    std::filesystem::path container(const std::string& name) const {
        return home_ / "Library/Containers" / name;
    }

    /// Returns when what has been changed so far is known to every observer: the kernel tells in
    /// order, and the probe comes last.
    void notice() {
        const int before = probed_;
        std::ofstream(probe_ / std::to_string(before)) << "";
        EXPECT_TRUE(support::waitUntil([&] { return probed_ > before; }));
    }

    static void makeFolders(const std::filesystem::path& path) {
        std::filesystem::create_directories(path);
    }

    const platform::MainQueueService mainQueue_{loop_};
    const std::filesystem::path home_ = folder_.path() / "home";
    const support::ScopedVariable homeVariable_{"HOME", home_.string()};

  private:
    const std::filesystem::path probe_ = folder_.path() / "probe";
    QNItemContentChangeMonitor::Observer probeObserver_;
    int probed_ = 0;
};
