#pragma once

#include "framework/support/QNSupportUtils.h"

#include <QString>

#include <optional>

/// Samples what the threads of processes do. Debuggers write into a file, and another program ends
/// them when they hang: one that writes into a pipe of the process that it has stopped would hang
/// for ever. Blocks; any thread.
class ProcessSampler {
  public:
    explicit ProcessSampler(const QNSupportUtils::Tools& tools) : tools_(tools) {}

    /// Of all processes of that name which this user runs. Nothing if there is none.
    [[nodiscard]] std::optional<QString> sample(const QString& name) const;

  private:
    class Output;

    bool sampleByStacks(pid_t process, Output& output) const;
    bool sampleOnce(const std::vector<std::string>& debugger, Output& output) const;
    void sampleStates(pid_t process, Output& output) const;
    void waitForNextRound() const;

    const QNSupportUtils::Tools& tools_;
};
