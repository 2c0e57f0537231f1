#pragma once

#include "tonvalectl/Mixer.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What tonvalectl prints: tables and lines for people, JSON for programs. Whole lines.
namespace Report {

/// Columns with a title each; "-" stands for the process and activity of what does not run. Names
/// are cut so that no row is wider than a terminal of so many columns, unless that is very narrow.
std::string table(const std::vector<CtlProgram>& programs,
                  std::optional<std::size_t> columns = std::nullopt);

/// "40% muted"
std::string line(const CtlProgram& program);

/// A name a line.
std::string names(const std::vector<std::string>& names);

/// An object, an array of such, an array of texts.
std::string json(const CtlProgram& program);
std::string json(const std::vector<CtlProgram>& programs);
std::string json(const std::vector<std::string>& names);

/// What has happened to a program: "added", "changed" or "removed".
std::string event(std::string_view what, const CtlProgram& program);
std::string jsonEvent(std::string_view what, const CtlProgram& program);

} // namespace Report
