#pragma once

#include "tonvalectl/Mixer.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The output of tonvalectl: tables and lines for users, JSON for programs. Complete lines.
namespace Report {

/// A table with column titles; "-" for process and activity of programs that do not run. Names are
/// cut so that no row is wider than `columns`, unless that is very small.
std::string table(const std::vector<CtlProgram>& programs,
                  std::optional<std::size_t> columns = std::nullopt);

/// "40% muted"
std::string line(const CtlProgram& program);

/// One name per line.
std::string names(const std::vector<std::string>& names);

/// An object, an array of objects, an array of texts.
std::string json(const CtlProgram& program);
std::string json(const std::vector<CtlProgram>& programs);
std::string json(const std::vector<std::string>& names);

/// A line for an event: "added", "changed" or "removed".
std::string event(std::string_view what, const CtlProgram& program);
std::string jsonEvent(std::string_view what, const CtlProgram& program);

} // namespace Report
