#pragma once

namespace QN::async {

/// Prints the current exception on standard output, as "Exception @ LINE: TEXT" or, if it is not a
/// standard one, "Unknown exception @ LINE". Call it inside a catch block only.
void printCurrentException(int line) noexcept;

} // namespace QN::async
