#pragma once

#include "plugin/identity/StreamProcess.h"

#include <cstdint>
#include <spa/utils/dict.h>
#include <string>

/// A property; empty if there is none.
std::string textIn(const spa_dict& properties, const char* key);

/// The object.serial among the properties; 0 without one.
std::uint64_t serialIn(const spa_dict* properties);

/// The claims in the properties of a node or a client about its process.
StreamClaims claimsIn(const spa_dict& properties);
