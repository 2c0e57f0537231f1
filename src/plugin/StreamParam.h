#pragma once

#include "plugin/StreamVolume.h"

struct pw_node;
struct spa_pod;

/// The server's encoding of a stream's volume: its "Props" parameter. PipeWire's thread.

/// Overwrites in `props` what the parameter tells; what it leaves out stays.
void readStreamProps(const spa_pod* param, StreamProps& props);

/// Sets what is given.
void writeStreamProps(pw_node* node, const VolumeWrite& write);
