#pragma once

#include "tonvalectl/Failure.h"

#include <gio/gio.h>

// What errors of the bus mean for a person. Each takes the error over.

Failure noBus(GError* error);
Failure failureOf(GError* error);
Failure busHasGone();
Failure notRunning();
