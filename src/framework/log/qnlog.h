#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

/// The log: text files with one line per message, for users and support.
///
///     qnlog_handle* const log = qnlog_open(path, QNLOG_BANNER | QNLOG_ROTATE | QNLOG_BOM);
///     qnlog_msg(log, qnlog_error, "Couldn't read %s: %s", name, reason);
///     qnlog_close(log);
///
/// A caller never waits for the disk: it appends its message to a queue, and a thread of the pool
/// writes it within a few milliseconds (errors at once), in order. The file begins with a
/// byte-order mark; then, whenever the hour or the zone has changed, comes a line with the local
/// date, and each message is a line with minute, second and millisecond of its call, the tag of its
/// level and its text, in one write(2):
///
///     2014-03-07 09:00:00 +100
///     :41:05.318: [E] Couldn't read /etc/motd: Permission denied
///
/// Further lines of a text follow unchanged. Control characters and bytes that are not UTF-8 become
/// question marks, so that no text can harm a terminal.
///
/// A line that the system refuses to write is silently lost; no line is left half written, and one
/// that a killed program left so is ended before the first message of the next run.
///
/// Messages wait in memory, up to 32 MiB of them, 24 bytes for each included. Further messages are
/// dropped, whether the disk hangs or is just too slow. In their place a line of level 2 gives
/// their number, whatever the level of the handle:
///
///     :41:07.21 : [W] Messages dropped here because too many were waiting: 1234
///
/// The file stays open even if it is renamed or deleted. Each handle has its own write position. So
/// open a file only once at a time: two handles overwrite each other's lines. Truncating the file
/// of a running program leaves a hole of zero bytes before its next line.
///
/// When the program ends, by exit(3) or by returning from main(), the waiting messages of all open
/// logs are written last, after the destructors of static objects. That takes at most 2 s; what a
/// hanging disk has not accepted by then is lost. (A thread that the kernel holds within a write,
/// as on a frozen file system, keeps the ended process in the list of processes until the disk
/// moves.) In a child made by fork(2) nothing is logged.
///
/// Nothing here throws. Any thread, unless a function says otherwise.
class qnlog_handle;

/// What qnlog_open() does besides opening; to be combined. Only the low 24 bits count.
enum : std::uint32_t {
    QNLOG_BANNER = 1, ///< the first message names the application and the system
    QNLOG_ROTATE = 2, ///< the file of the last run becomes backup 0, backup 0 becomes 1, up to 4
    QNLOG_BOM = 4,    ///< a new file begins with the byte-order mark of UTF-8
};

/// The levels that have a tag. A message is written when its level is at most the handle's. All
/// numbers may be used: 5 to 9, 11 to 14 and 16 have no tag, greater ones have "[T]".
enum : std::uint32_t {
    qnlog_critical = 0,         ///< [C]
    qnlog_error = 1,            ///< [E]
    qnlog_warning = 2,          ///< [W]
    qnlog_information = 3,      ///< [I]
    qnlog_user = 4,             ///< [U], the level of a new handle
    qnlog_verbose = 10,         ///< [V]
    qnlog_debug = 15,           ///< [D]
    qnlog_always = 0xFFFFFFFFU, ///< no tag, written whatever the handle's level
};

/// Opens the file, UTF-8 text `path`, creating it with mode 0644, and appends to it. Its folder
/// must be there. Null if it cannot be opened. A file that could not be rotated is reported on
/// standard error. If root acts for another user (set-user-ID), the file is given to that user.
[[nodiscard]] qnlog_handle* qnlog_open(const char* path, std::uint32_t flags);

/// Returns when everything that was logged has been written, however long that takes, and destroys
/// the handle, which must not be used any more. Other logs are not blocked. Called from the
/// destructor of a static object, it returns at once, and the end of the program writes the waiting
/// messages. Null is ignored.
void qnlog_close(qnlog_handle* handle);

/// The level up to which messages are currently written.
std::uint32_t qnlog_getlevel(const qnlog_handle* handle);

/// Whether a message of that level, logged now, would be written: for callers whose text is
/// expensive to make.
[[nodiscard]] bool qnlog_wants(const qnlog_handle* handle, std::uint32_t level);

/// Sets the level for the messages after this call and logs "log level changed". One of 17 or more
/// is ignored.
void qnlog_setlevel(qnlog_handle* handle, std::uint32_t level);

/// Logs a text in the manner of printf(3). An empty one is not logged.
[[gnu::format(printf, 3, 4)]] void qnlog_msg(qnlog_handle* handle, std::uint32_t level,
                                             const char* format, ...);
[[gnu::format(printf, 3, 0)]] void _qnlogmsg_FREE(qnlog_handle* handle, std::uint32_t level,
                                                  const char* format, va_list arguments);

/// The existing backups of the log at `path`: an array of `count` entries, which is 5, entry n
/// being the path of backup n, or null. The caller passes each entry and the array to free(3).
/// Null, and 0 entries, when memory runs out.
[[nodiscard]] char** qnlog_rotated_files(const char* path, std::size_t* count);
