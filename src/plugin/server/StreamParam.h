#pragma once

#include "plugin/volume/StreamVolume.h"

#include <optional>

struct pw_node;
struct spa_pod;

/// The server's encoding of a stream's volume: its "Props" parameter. PipeWire's thread.

/// Updates `props` from the parameter; missing values stay.
void readStreamProps(const spa_pod* param, StreamProps& props);

/// Whether the volume is locked according to the parameter; nothing if it does not say.
[[nodiscard]] std::optional<bool> readVolumeLock(const spa_pod* param);

/// Whether an "EnumFormat" parameter describes raw samples, whose volume can be changed.
[[nodiscard]] bool isRawFormat(const spa_pod* param);

/// Writes the given values.
void writeStreamProps(pw_node* node, const VolumeWrite& write);
