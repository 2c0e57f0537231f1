#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace bench {

/// One figure: a number of ours and, where there is one, the same work done by a peer. Lower is
/// better.
struct Figure {
    std::string name;   ///< "area/what", or "area/what/p99" for a 99th percentile
    std::string metric; ///< what is measured, in words
    std::string unit;
    std::function<double()> ours; ///< does the work once and returns the number
    std::string peerName;         ///< empty: no peer
    std::function<double()> peer;
    int rounds = 7; ///< how often each is measured
    /// Makes what the work needs around it, which then lives until the last round is over.
    std::function<std::shared_ptr<void>()> surroundings = {};
};

/// Makes a figure known to run(). Call it from a static object of the file that measures.
bool addFigure(Figure figure);

/// Nanoseconds that `work` takes for one of the `count` operations that it does.
double nanosecondsEach(std::size_t count, const std::function<void()>& work);

/// Measures every figure whose name contains `filter`: peer and ours alternate, and the medians
/// count. Prints them and writes them to `resultFile` as JSON. False when no name fits or the file
/// cannot be written.
bool run(std::string_view filter, const std::string& resultFile);

} // namespace bench
