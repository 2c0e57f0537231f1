#include "app/FileAlerts.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/base/Mutex.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/text/WrappablePath.h"

#include <QSet>

#include <utility>
#include <vector>

using platform::DefaultsError;
using platform::formatted;
using platform::wrappablePath;
using Kind = DefaultsError::Kind;

namespace {

struct Text {
    QString title;
    QString message;
};

/// Never destroyed: preferences may be saved after main() has returned.
struct State {
    platform::Mutex mutex;
    std::vector<DefaultsError> early GUARDED_BY(mutex); // before the log is open
    bool isLogOpen GUARDED_BY(mutex) = false;

    // The main thread only.
    FileAlerts::Show show;
    std::vector<Text> waiting;
    QSet<QString> told; // the titles
};

State& state() {
    static auto* const state = new State;
    return *state;
}

Text textOf(const DefaultsError& trouble) {
    const QString file = QString::fromStdString(trouble.file);
    if (trouble.kind == Kind::lost)
        return {
            Texts::tr("Your settings were damaged"),
            formatted(
                Texts::tr("Tonvale couldn't read them and is using the default settings.\n\nThe "
                          "damaged file has been kept as\n%@"),
                wrappablePath(file))};
    if (trouble.kind == Kind::restored)
        return {Texts::tr("The settings file was damaged"),
                formatted(Texts::tr("Tonvale has restored it. No settings were lost.\n\n"
                                    "The damaged file has been kept as\n%@"),
                          wrappablePath(file))};
    QString reason = QString::fromStdString(trouble.line);
    if (!file.isEmpty())
        reason.replace(file, wrappablePath(file));
    return {
        Texts::tr("Settings can't be saved"),
        formatted(
            Texts::tr("Everything works as usual until you quit, and Tonvale keeps trying. What "
                      "it hasn't saved by then will be forgotten.\n\n%@"),
            reason)};
}

void tell(Text text) {
    if (state().show == nullptr) {
        state().waiting.push_back(std::move(text));
    } else if (!state().told.contains(text.title)) {
        state().told.insert(text.title);
        state().show(text.title, text.message);
    }
}

void log(const DefaultsError& trouble) {
    QNLogText(trouble.kind == Kind::unsaved ? qnlog_error : qnlog_warning,
              QString::fromStdString(trouble.line));
}

/// Any thread.
void report(const DefaultsError& trouble) {
    {
        const platform::ScopedLock lock(state().mutex);
        if (!state().isLogOpen) {
            state().early.push_back(trouble);
            return;
        }
    }
    log(trouble);
    platform::DispatchQueue::main()->async([trouble] { tell(textOf(trouble)); });
}

} // namespace

void FileAlerts::listen() {
    platform::UserDefaults::setReporter(&report);
}

void FileAlerts::logIsOpen() {
    std::vector<DefaultsError> early;
    {
        const platform::ScopedLock lock(state().mutex);
        state().isLogOpen = true;
        early.swap(state().early);
    }
    for (const DefaultsError& trouble : early) {
        log(trouble);
        tell(textOf(trouble));
    }
}

void FileAlerts::logIsMissing(const QString& path) {
    const QString reason = path.isEmpty()
                               ? Texts::tr("There is no folder for it.")
                               : formatted(Texts::tr("The file would be\n%@"), wrappablePath(path));
    tell({Texts::tr("The log can't be written"),
          formatted(Texts::tr("Tonvale works as usual; what it would write to its "
                              "log goes to the system log.\n\n%@"),
                    reason)});
}

void FileAlerts::showWith(Show show) {
    state().show = std::move(show);
    if (state().show == nullptr)
        return;
    for (Text& text : std::exchange(state().waiting, {}))
        tell(std::move(text));
}
