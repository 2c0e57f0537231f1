#pragma once

#include <string>
#include <vector>

/// Which of `names` are `wanted`: the one that is the same, else those that look the same but for
/// case. All are UTF-8; letters that Unicode has two spellings of are the same, and what is not
/// shown of a name does not count. Each name counts once, in the order given.
std::vector<std::string> namesAlike(const std::string& wanted,
                                    const std::vector<std::string>& names);

/// Which of `names` a person may mean by `wanted`: namesAlike(), else those that begin with it. One
/// answer is certain, several are doubtful.
std::vector<std::string> namesMeant(const std::string& wanted,
                                    const std::vector<std::string>& names);

/// The certain one. Throws Failure when there is none, or it is doubtful: that lists who is meant.
std::string nameMeant(const std::string& wanted, const std::vector<std::string>& names);
