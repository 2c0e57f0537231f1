#pragma once

/// Installs the accessibility of items and their controls, for the whole process. Main thread only,
/// with an application object; further calls do nothing.
void installAccessibleItems();
