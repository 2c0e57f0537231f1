#pragma once

#include "platform/bundle/Bundle.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <optional>
#include <string>

/// Facts for support reports, mostly by the system's own tools: those run in the C locale, without
/// network, for 10 s at most (30 s for the full profile), and what they print beyond some MiB is
/// dropped. Nothing means that a tool is missing or has failed. Blocks; any thread.
class QNSupportUtils {
  public:
    QNSupportUtils() = delete;

    /// The tools, by their absolute paths, and the folder that holds /proc, /sys and /var.
    struct Tools {
        std::string root;
        std::string journalctl = "/usr/bin/journalctl";
        std::string wpctl = "/usr/bin/wpctl";
        std::string pipewire = "/usr/bin/pipewire";
        std::string wireplumber = "/usr/bin/wireplumber";
        std::string pwDump = "/usr/bin/pw-dump";
        std::string pactl = "/usr/bin/pactl";
        std::string lshw = "/usr/bin/lshw";
        std::string systemctl = "/usr/bin/systemctl";
        std::string euStack = "/usr/bin/eu-stack";
        std::string gdb = "/usr/bin/gdb";
        std::string timeout = "/usr/bin/timeout";
        std::chrono::milliseconds sampleTime{3000};
        std::chrono::milliseconds toolTime{10000};
        std::chrono::milliseconds fullProfileTime{30000};
    };

    /// What is used from now on; for tests. Not while another thread uses this class.
    static void setTools(Tools tools);

    /// The log file of a system without journal; empty if there is none.
    [[nodiscard]] static QString systemLogPath();

    /// What the system has logged about our services, and about programs of these names, at most
    /// the last 2 MiB.
    [[nodiscard]] static std::optional<QString> systemLogForProcesses(const QStringList& names);

    /// Brief: a screen of facts and the state of the sound system. Otherwise all that is known of
    /// the hardware and the sound system, as XML.
    [[nodiscard]] static std::optional<QString> systemProfile(bool brief);

    /// What the threads of the processes of that name do for 3 s.
    [[nodiscard]] static std::optional<QString> sampleProcess(const QString& name);

    /// The paths of the crash reports of programs of these names, in the folders of this user and
    /// of all users, and in others; nothing if there is none.
    [[nodiscard]] static std::optional<QStringList>
    crashReportsForProcesses(const QStringList& names, const QStringList& otherFolders = {});

    /// The names of all our programs.
    [[nodiscard]] static QStringList allProcessNames();

    /// The address that the desktop's account service has of the user; nothing without such a
    /// service. Waits for it for 2 s at most. Main thread only.
    [[nodiscard]] static std::optional<QString> userEmail();

    /// Name, version and build of the bundle.
    [[nodiscard]] static QString
    bundleInfo(const platform::Bundle& bundle = platform::Bundle::main());

    /// The sources of the bundle's install manifest that this user may execute or that are bundles.
    /// Nothing if there is no usable manifest.
    [[nodiscard]] static std::optional<QList<QUrl>>
    installerExecutablesAndBundles(const platform::Bundle& bundle = platform::Bundle::main());
};
