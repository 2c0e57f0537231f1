#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

/// The messages on the socket between the application and its audio plug-in, in the machine's byte
/// order; see docs/wire.md. The first 32 bits give a message's type, and thereby its length; there
/// is no other framing.

enum MVCommMessageID : std::uint32_t {
    kMVCommCheckin = 0x0800,
    kMVCommActivity = 0x0900,
};

/// Plug-in to application: the program that this connection stands for.
struct MVCommCheckinMessage {
    std::uint32_t messageID; ///< kMVCommCheckin
    std::uint32_t pid;       ///< the process that makes the sound
    char name[128];          ///< its name, UTF-8, NUL-terminated within the field
    char path[1024];         ///< its executable's full path, UTF-8, NUL-terminated within the field
};

/// Plug-in to application: the level of a process, sent while it plays.
struct MVCommActivityMessage {
    std::uint32_t messageID; ///< kMVCommActivity
    std::uint32_t pid;
    float level; ///< peak before the volume is applied, linear, nominally 0.0 (silent) to 1.0
};

/// The name with which the connection for all notification sounds checks in; reserved for it.
inline constexpr std::string_view kMVCommNotificationSoundsName = "coreaudiod";

enum MVCommConsoleMessageType : std::int32_t {
    kMVCommSetVolume = 9,          ///< value: percent, 0 to 100
    kMVCommSetMute = 10,           ///< value: 1 muted, 0 not
    kMVCommIgnoreListChanged = 11, ///< pid and value 0; concerns every plug-in
};

/// Application to plug-in. Every plug-in gets every command and ignores those for other pids.
struct MVCommConsoleMessage {
    std::int32_t type;
    std::int32_t pid;
    std::int32_t reserved; ///< always 0
    std::int32_t value;
};

static_assert(sizeof(MVCommCheckinMessage) == 1160);
static_assert(sizeof(MVCommActivityMessage) == 12);
static_assert(sizeof(MVCommConsoleMessage) == 16);
static_assert(std::is_trivially_copyable_v<MVCommCheckinMessage>);
