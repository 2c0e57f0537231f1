#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// Facts about the machine for reports. An unknown fact is empty. Any thread.
///
/// `root` is the folder that holds /proc, /sys and /usr, for a machine other than this one.

/// The maker's name of the processor: "AMD Ryzen 5 5600U".
std::string processorName(const std::string& root = {});

/// The PCI displays by their makers' names, where the list of those is installed, and their
/// numbers: "Intel Corporation TigerLake-LP GT2 [8086:9a49]".
std::vector<std::string> graphicsCards(const std::string& root = {});

/// The names of the sound cards, as the kernel lists them.
std::vector<std::string> soundCards(const std::string& root = {});

/// The name and version of the distribution: "Debian GNU/Linux 12 (bookworm)".
std::string distributionName(const std::string& root = {});

/// When the system was started. Nothing if unknown.
[[nodiscard]] std::optional<std::chrono::sys_seconds> bootTime(const std::string& root = {});

/// The system log's file of a system without a journal; empty if there is none.
std::string systemLogFile(const std::string& root = {});

} // namespace platform
