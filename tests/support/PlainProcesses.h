#pragma once

#include "naming/ProcessView.h"

#include <map>
#include <optional>
#include <vector>

/// Processes that a test has made up.
class PlainProcesses final : public ProcessView {
  public:
    std::optional<ProcessRecord> process(pid_t pid) const override {
        const auto found = records.find(pid);
        return found != records.end() ? std::optional(found->second) : std::nullopt;
    }
    std::optional<std::uint64_t> startTime(pid_t pid) const override {
        const auto record = process(pid);
        return record ? std::optional(record->startTime) : std::nullopt;
    }
    std::vector<pid_t> processesOf(uid_t user) const override {
        std::vector<pid_t> processes;
        for (const auto& [pid, record] : records) {
            if (record.user == user)
                processes.push_back(pid);
        }
        return processes;
    }

    std::map<pid_t, ProcessRecord> records;
};
