#pragma once

#include "platform/StreamProcess.h"

#include <spa/utils/dict.h>
#include <string>

/// A property; empty when there is none.
std::string textIn(const spa_dict& properties, const char* key);

/// What the properties of a node or a client say about the process behind it.
platform::StreamClaims claimsIn(const spa_dict& properties);
