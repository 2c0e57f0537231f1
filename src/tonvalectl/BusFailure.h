#pragma once

#include "tonvalectl/Failure.h"

#include <gio/gio.h>

// Converts errors of the bus into messages for the user. Each takes ownership of the error.

Failure noBus(GError* error);
Failure failureOf(GError* error);
Failure busHasGone();
Failure notRunning();
