#pragma once

/// Tells assistive tools what the parts of an item are: from now on, for all windows of the
/// process. The main thread only, with an application object; further calls do nothing.
void installAccessibleItems();
