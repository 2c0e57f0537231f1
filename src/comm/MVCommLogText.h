#pragma once

class QString;

/// A text from a plug-in, made safe for one line of the log: characters that begin a new line or
/// change the text direction are escaped, "\n" or "\u202e". The log handles other control
/// characters. Any thread.
QString MVCommLogText(const QString& text);
