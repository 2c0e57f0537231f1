#pragma once

/// `--status`: asks the plug-in that runs in this session and prints what it answers. Answers the
/// exit status: 0, or 1 with a line on standard error when nobody answers. Waits for a bus, and for
/// an answer, for some seconds at most. Needs an application object; main thread.
int printPluginStatus();
