#pragma once

#include <string>
#include <vector>

/// The `names` that equal `wanted`: an exact match, else matches that ignore case. All are UTF-8;
/// compared in normalised form, and without invisible characters. Each name is returned once, in
/// the given order.
std::vector<std::string> namesAlike(const std::string& wanted,
                                    const std::vector<std::string>& names);

/// The `names` that `wanted` may refer to: namesAlike(), else those that begin with it. Several
/// results mean that it is ambiguous.
std::vector<std::string> namesMeant(const std::string& wanted,
                                    const std::vector<std::string>& names);

/// The only match. Throws Failure if there is none, or several, which the message lists.
std::string nameMeant(const std::string& wanted, const std::vector<std::string>& names);
