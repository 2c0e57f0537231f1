#pragma once

class Workspace;

/// Gives the tiles that stand for missing icons the theme's colours, now and whenever it changes.
/// Once for a workspace, which is never destroyed. Main thread only.
void colorLetterTiles(Workspace& workspace);
