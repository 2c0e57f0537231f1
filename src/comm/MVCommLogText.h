#pragma once

class QString;

/// What a plug-in calls its program, made fit for a line of the log: what begins a new line, or
/// turns the direction of the text behind it, is written as an escape, "\n" or "\u202e". Other
/// control characters are the log's business. Any thread.
QString MVCommLogText(const QString& text);
