#pragma once

#include "model/LastChanges.h"

#include <QString>

/// Where a volume was changed last and when, in a sentence for the user; with the date unless it
/// was today.
QString lastChangeText(const LastChange& change);
