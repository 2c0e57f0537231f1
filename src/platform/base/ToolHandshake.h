#pragma once

namespace platform {

/// What an application and the tool that it runs as administrator say to each other, a byte each.
/// No message of the programs in between contains these bytes.

/// By the tool on its standard error, as soon as it runs: it has been authorised.
inline constexpr char toolIsAuthorized = '\x06';

/// To the tool on its standard input: go on. The end of its input instead means: leave everything
/// as it is.
inline constexpr char toolMayGoOn = '\x06';

} // namespace platform
