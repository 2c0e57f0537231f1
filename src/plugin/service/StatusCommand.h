#pragma once

/// `--status`: prints the status of the plug-in that runs in this session. Returns the exit status:
/// 0, or 1 with a line on standard error if there is no answer. Waits for the bus and the answer
/// for some seconds at most. Needs an application object; main thread.
int printPluginStatus();
