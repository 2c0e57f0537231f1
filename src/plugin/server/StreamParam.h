#pragma once

#include "plugin/volume/StreamVolume.h"

#include <optional>

struct pw_node;
struct spa_pod;

/// The server's encoding of a stream's volume: its "Props" parameter. PipeWire's thread.

/// Overwrites in `props` what the parameter tells; what it leaves out stays.
void readStreamProps(const spa_pod* param, StreamProps& props);

/// Whether the parameter tells that the volume cannot be set; nothing when it does not tell.
std::optional<bool> readVolumeLock(const spa_pod* param);

/// Whether an "EnumFormat" parameter stands for plain samples, which can be multiplied.
bool isRawFormat(const spa_pod* param);

/// Sets what is given.
void writeStreamProps(pw_node* node, const VolumeWrite& write);
