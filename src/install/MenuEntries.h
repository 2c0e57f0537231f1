#pragma once

/// Removes the application's menu entry and its icons from this user's own folders, where a copied
/// application has put them; those that all users share belong to whoever has installed them. Files
/// that cannot be removed are logged. Main thread only.
void removeMenuEntries();
