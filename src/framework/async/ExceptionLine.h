#pragma once

namespace QN::async {

/// Prints the exception being handled on standard output, as "Exception @ LINE: TEXT" or, when it
/// is no standard one, "Unknown exception @ LINE". Call it inside a catch block only.
void printCurrentException(int line) noexcept;

} // namespace QN::async
