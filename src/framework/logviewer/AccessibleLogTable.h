#pragma once

/// Installs the accessibility of log tables, for the whole process. Main thread only, with an
/// application object; further calls do nothing.
void installAccessibleLogTable();
