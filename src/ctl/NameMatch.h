#pragma once

#include <string>
#include <vector>

/// Which of `names` a person may mean by `wanted`: the one that is the same, else those that are
/// the same but for case, else those that begin with it whatever the case. All are UTF-8; letters
/// that Unicode has two spellings of are the same. Each name counts once, in the order given. One
/// answer is certain, several are doubtful.
std::vector<std::string> namesMeant(const std::string& wanted,
                                    const std::vector<std::string>& names);

/// The certain one. Throws Failure when there is none, or it is doubtful: that lists who is meant.
std::string nameMeant(const std::string& wanted, const std::vector<std::string>& names);
