#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// Facts about the machine and its system. An unknown fact is empty. Any thread.
///
/// `root` is the folder that holds /proc and /sys, for a machine other than this one.

/// The version of the distribution, VERSION_ID of os-release(5): "12".
std::string productVersion();

/// The build of the system, here the release of its kernel: "6.1.0-18-amd64".
std::string productBuild();

/// Physical cores in use; hyper-threads count once. At least 1.
unsigned physicalProcessorCount(const std::string& root = {});

/// Logical processors in use. At least 1.
unsigned availableProcessorCount(const std::string& root = {});

/// Logical processors that this process may run on. At least 1.
unsigned activeProcessorCount();

/// The maximum frequency of a processor in hertz or, if the system does not provide it, the highest
/// current one. 0 if unknown.
std::uint64_t processorFrequency(const std::string& root = {});

/// Usable memory in bytes. 0 if unknown.
std::uint64_t physicalMemory(const std::string& root = {});

/// The manufacturer's name of the machine: "Latitude 7420". Placeholders of firmware vendors are
/// ignored.
std::string machineModelName(const std::string& root = {});

/// Whether the system was started for a single user (the system value "kern.singleuser"),
/// determined on the first call. False if unknown.
[[nodiscard]] bool isSingleUserMode();

} // namespace platform
