#include "naming/ProgramKinds.h"

#include <span>
#include <unordered_map>

namespace {

// The tables are never destroyed, since other threads may ask until the process has ended.
using Kinds = std::unordered_map<std::string_view, ProgramKind>;
using Runtimes = std::unordered_map<std::string_view, ProgramRuntime>;

constexpr std::string_view shells[] = {"ash",  "bash", "csh",  "dash", "elvish", "fish",  "ksh",
                                       "mksh", "nu",   "pwsh", "sh",   "tcsh",   "xonsh", "zsh"};

constexpr std::string_view terminals[] = {"alacritty",
                                          "blackbox",
                                          "cool-retro-term",
                                          "deepin-terminal",
                                          "doas",
                                          "foot",
                                          "footclient",
                                          "ghostty",
                                          "gnome-console",
                                          "gnome-terminal",
                                          "gnome-terminal-server",
                                          "guake",
                                          "kgx",
                                          "kitty",
                                          "konsole",
                                          "login",
                                          "lxterminal",
                                          "mate-terminal",
                                          "ptyxis",
                                          "ptyxis-agent",
                                          "qterminal",
                                          "rxvt",
                                          "sakura",
                                          "screen",
                                          "sshd",
                                          "sshd-session",
                                          "st",
                                          "su",
                                          "sudo",
                                          "terminator",
                                          "terminology",
                                          "tilda",
                                          "tilix",
                                          "tmux",
                                          "urxvt",
                                          "urxvtd",
                                          "wezterm",
                                          "wezterm-gui",
                                          "xfce4-terminal",
                                          "xterm",
                                          "yakuake",
                                          "zellij"};

constexpr std::string_view editors[] = {"atom",
                                        "clion",
                                        "code",
                                        "code-insiders",
                                        "code-oss",
                                        "codium",
                                        "eclipse",
                                        "emacs",
                                        "gnome-builder",
                                        "geany",
                                        "gedit",
                                        "gnome-text-editor",
                                        "goland",
                                        "gvim",
                                        "idea",
                                        "kate",
                                        "kdevelop",
                                        "kwrite",
                                        "mousepad",
                                        "nano",
                                        "nvim",
                                        "nvim-qt",
                                        "pluma",
                                        "pycharm",
                                        "qtcreator",
                                        "rider",
                                        "studio",
                                        "sublime_text",
                                        "vi",
                                        "vim",
                                        "vscodium",
                                        "webstorm",
                                        "xed",
                                        "zed"};

constexpr std::string_view launchers[] = {"albert",
                                          "bottles",
                                          "bottles-cli",
                                          "dmenu",
                                          "dmenu_run",
                                          "gamescope",
                                          "heroic",
                                          "hgl",
                                          "itch",
                                          "krunner",
                                          "legendary",
                                          "lutris",
                                          "lutris-wrapper",
                                          "minecraft-launcher",
                                          "minigalaxy",
                                          "multimc",
                                          "prismlauncher",
                                          "rofi",
                                          "steam",
                                          "ulauncher",
                                          "wofi"};

constexpr std::string_view sessions[] = {"Hyprland",
                                         "Xorg",
                                         "Xwayland",
                                         "at-spi-bus-launcher",
                                         "awesome",
                                         "bspwm",
                                         "budgie-wm",
                                         "cinnamon",
                                         "cinnamon-session",
                                         "cron",
                                         "dbus-broker",
                                         "dbus-daemon",
                                         "dbus-launch",
                                         "dolphin",
                                         "gdm-session-worker",
                                         "gdm-wayland-session",
                                         "gdm-x-session",
                                         "gnome-session",
                                         "gnome-session-binary",
                                         "gnome-shell",
                                         "gnome-software",
                                         "gvfsd",
                                         "i3",
                                         "init",
                                         "kded5",
                                         "kded6",
                                         "kdeinit5",
                                         "klauncher",
                                         "ksmserver",
                                         "kwin_wayland",
                                         "kwin_x11",
                                         "labwc",
                                         "lightdm",
                                         "lxpanel",
                                         "lxqt-panel",
                                         "lxqt-session",
                                         "lxsession",
                                         "mate-panel",
                                         "mate-session",
                                         "nautilus",
                                         "nemo",
                                         "openbox",
                                         "pcmanfm",
                                         "pcmanfm-qt",
                                         "pipewire",
                                         "pipewire-pulse",
                                         "plasma_session",
                                         "plasmashell",
                                         "river",
                                         "sddm",
                                         "sddm-helper",
                                         "startplasma-wayland",
                                         "startplasma-x11",
                                         "sway",
                                         "systemd",
                                         "systemd-executor",
                                         "Thunar",
                                         "thunar",
                                         "wayfire",
                                         "wireplumber",
                                         "xdg-desktop-portal",
                                         "xfce4-panel",
                                         "xfce4-session",
                                         "xfdesktop"};

constexpr std::string_view wrappers[] = {"bwrap",
                                         "catatonit",
                                         "conmon",
                                         "env",
                                         "firejail",
                                         "flatpak",
                                         "flatpak-portal",
                                         "gamemoderun",
                                         "gdb",
                                         "mangohud",
                                         "pressure-vessel-wrap",
                                         "pv-adverb",
                                         "pv-bwrap",
                                         "reaper",
                                         "snap-confine",
                                         "snap-exec",
                                         "srt-bwrap",
                                         "steam-launch-wrapper",
                                         "steam-runtime-launcher-service",
                                         "strace",
                                         "tini",
                                         "wineserver",
                                         "xdg-dbus-proxy",
                                         "xvfb-run",
                                         "zypak-helper",
                                         "zypak-sandbox"};

constexpr std::string_view browsers[] = {"angelfish",
                                         "basilisk",
                                         "brave",
                                         "brave-browser",
                                         "chrome",
                                         "chromium",
                                         "chromium-browser",
                                         "epiphany",
                                         "epiphany-browser",
                                         "falkon",
                                         "firedragon",
                                         "firefox",
                                         "firefox-bin",
                                         "firefox-esr",
                                         "firefox.real",
                                         "floorp",
                                         "icecat",
                                         "iceweasel",
                                         "konqueror",
                                         "librewolf",
                                         "luakit",
                                         "microsoft-edge",
                                         "midori",
                                         "msedge",
                                         "mullvadbrowser",
                                         "mullvadbrowser.real",
                                         "nyxt",
                                         "opera",
                                         "palemoon",
                                         "qutebrowser",
                                         "seamonkey",
                                         "surf",
                                         "thorium",
                                         "thunderbird",
                                         "thunderbird-bin",
                                         "thunderbird-esr",
                                         "vivaldi",
                                         "vivaldi-bin",
                                         "waterfox",
                                         "yandex_browser",
                                         "zen",
                                         "zen-bin"};

constexpr std::string_view pageShows[] = {
    "QtWebEngineProcess", "WebKitGPUProcess", "WebKitNetworkProcess",
    "WebKitWebProcess",   "cefsubprocess",    "chrome_crashpad_handler",
    "jcef_helper",        "plugin-container", "steamwebhelper"};

constexpr std::string_view soundTools[] = {
    "aplay", "canberra-gtk-play", "pacat", "paplay", "pw-cat", "pw-play"};

Kinds allKinds() {
    Kinds kinds;
    const auto add = [&kinds](std::span<const std::string_view> names, ProgramKind kind) {
        for (const std::string_view name : names)
            kinds.emplace(name, kind);
    };
    add(shells, ProgramKind::shell);
    add(terminals, ProgramKind::terminal);
    add(editors, ProgramKind::editor);
    add(launchers, ProgramKind::launcher);
    add(sessions, ProgramKind::session);
    add(wrappers, ProgramKind::wrapper);
    add(browsers, ProgramKind::browser);
    add(pageShows, ProgramKind::webView);
    add(soundTools, ProgramKind::soundTool);
    return kinds;
}

/// Without a version behind the name: "python3.11", "electron25", "wine64".
std::string_view unversioned(std::string_view name) noexcept {
    const std::size_t end = name.find_last_not_of("0123456789.-");
    return end == std::string_view::npos ? name : name.substr(0, end + 1);
}

/// The service, or a program in the folder of its modules.
bool isSpeech(std::string_view executable) noexcept {
    constexpr std::string_view service = "speech-dispatcher";
    const std::string_view name = fileName(executable);
    return name == service ||
           (name.starts_with("sd_") && fileName(folderName(executable)).starts_with(service));
}

} // namespace

ProgramKind programKind(std::string_view executable) {
    static const auto& kinds = *new Kinds(allKinds());
    if (isSpeech(executable))
        return ProgramKind::speech;
    const std::string_view name = fileName(executable);
    if (const auto found = kinds.find(name); found != kinds.end())
        return found->second;
    const auto found = kinds.find(unversioned(name));
    return found != kinds.end() && found->second != ProgramKind::session ? found->second
                                                                         : ProgramKind::other;
}

bool showsPages(std::string_view executable) {
    const ProgramKind kind = programKind(executable);
    return kind == ProgramKind::browser || kind == ProgramKind::webView ||
           programRuntime(executable) == ProgramRuntime::electron;
}

bool startsOthers(ProgramKind kind) noexcept {
    return kind == ProgramKind::shell || kind == ProgramKind::terminal ||
           kind == ProgramKind::editor || kind == ProgramKind::launcher ||
           kind == ProgramKind::session;
}

ProgramRuntime programRuntime(std::string_view executable) {
    static const auto& runtimes =
        *new Runtimes{{"deno", ProgramRuntime::script},        {"dotnet", ProgramRuntime::script},
                      {"electron", ProgramRuntime::electron},  {"gjs", ProgramRuntime::script},
                      {"gjs-console", ProgramRuntime::script}, {"guile", ProgramRuntime::script},
                      {"java", ProgramRuntime::java},          {"lua", ProgramRuntime::script},
                      {"luajit", ProgramRuntime::script},      {"mono", ProgramRuntime::script},
                      {"mono-sgen", ProgramRuntime::script},   {"node", ProgramRuntime::script},
                      {"nodejs", ProgramRuntime::script},      {"perl", ProgramRuntime::script},
                      {"php", ProgramRuntime::script},         {"pypy", ProgramRuntime::module},
                      {"python", ProgramRuntime::module},      {"qml", ProgramRuntime::script},
                      {"ruby", ProgramRuntime::script},        {"wish", ProgramRuntime::script}};
    const std::string_view name = fileName(executable);
    const auto found = runtimes.find(unversioned(name));
    if (found != runtimes.end())
        return found->second;
    if (programKind(name) == ProgramKind::shell)
        return ProgramRuntime::shell;
    const bool isWine = unversioned(name) == "wine" || name.ends_with("-preloader") ||
                        name == "wine-stable" || name == "wine-development";
    return isWine ? ProgramRuntime::wine : ProgramRuntime::none;
}

std::string_view fileName(std::string_view path) noexcept {
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    const bool isWindows = path.size() > 2 && path[1] == ':' && path.find('\\') < path.size();
    const std::size_t slash = path.find_last_of(isWindows ? "/\\" : "/");
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view folderName(std::string_view path) noexcept {
    const std::string_view name = fileName(path);
    const std::size_t start = static_cast<std::size_t>(name.data() - path.data());
    return start > 1 ? path.substr(0, start - 1) : std::string_view();
}
