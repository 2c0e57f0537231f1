#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// What there is to know about the machine and its system. A fact that cannot be had is empty. Any
/// thread.
///
/// `root` is the folder that holds /proc and /sys, for a machine other than this one.

/// The version of the distribution, VERSION_ID of os-release(5): "12".
std::string productVersion();

/// The build of the system, here the release of its kernel: "6.1.0-18-amd64".
std::string productBuild();

/// Cores of the processors in use; those that share one core count once. At least 1.
unsigned physicalProcessorCount(const std::string& root = {});

/// Processors in use as programs see them. At least 1.
unsigned availableProcessorCount(const std::string& root = {});

/// Those of them that this process may run on. At least 1.
unsigned activeProcessorCount();

/// Hertz: the highest that a processor can reach or, where the system does not tell, the highest
/// that one runs at now. 0 when it is not known.
std::uint64_t processorFrequency(const std::string& root = {});

/// Bytes that the system has to give away. 0 when it is not known.
std::uint64_t physicalMemory(const std::string& root = {});

/// What the maker calls the machine: "Latitude 7420". What firmware makers leave in place of a name
/// does not count.
std::string machineModelName(const std::string& root = {});

/// Whether the system was started for a single user (the system value "kern.singleuser"), as the
/// first call found it. False when that is not known.
bool isSingleUserMode();

} // namespace platform
