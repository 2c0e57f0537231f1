#include "app/PluginHealth.h"

#include "app/PluginStarter.h"

#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::seconds absencePatience{2};
constexpr std::chrono::seconds startPatience{5};
constexpr std::chrono::seconds silencePatience{10}; // a plug-in tries every 5 s at least
constexpr std::chrono::seconds socketPause{5};
constexpr int mostExtensions = 2; // systemd waits 3 s before it tries again

} // namespace

PluginHealth::PluginHealth(platform::RunLoop& loop, Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , review_(loop, [this] { review(); })
    , patience_(loop, [this] { endOfPatience(); }) {}

void PluginHealth::begin() {
    if (!dependencies_.serveSocket()) {
        setProblem(Problem::noSocket);
        patience_.start(socketPause);
        return;
    }
    setProblem(Problem::none);
    presence_.reset();
    review();
}

PluginHealth::Presence PluginHealth::presence() const {
    if (dependencies_.isConnected())
        return Presence::connected;
    return dependencies_.isOnTheBus() ? Presence::onTheBus : Presence::none;
}

void PluginHealth::review() {
    if (problem_ == Problem::noSocket)
        return;
    const Presence now = presence();
    if (std::exchange(presence_, now) == now)
        return;
    extensions_ = 0;
    if (now != Presence::none)
        setProblem(Problem::none);
    waitAndSee();
}

void PluginHealth::waitAndSee() {
    if (presence_ == Presence::connected)
        patience_.stop();
    else if (presence_ == Presence::onTheBus)
        patience_.start(silencePatience);
    else
        patience_.start(problem_ == Problem::starting ? startPatience : absencePatience);
}

/// Connections that have not checked in are not announced, so the presence may have changed.
void PluginHealth::endOfPatience() {
    if (problem_ == Problem::noSocket) {
        begin(); // the obstacle may be gone
        return;
    }
    const auto before = presence_;
    review();
    if (presence_ != before)
        return;
    if (presence_ == Presence::onTheBus)
        setProblem(Problem::silent);
    else if (presence_ == Presence::none)
        lookWhetherItStarts();
}

void PluginHealth::lookWhetherItStarts() {
    dependencies_.starter.askWhetherItStarts([this](bool isStarting) {
        if (presence_ != Presence::none || patience_.isActive())
            return; // it has come, or gone anew, meanwhile
        if (isStarting && extensions_++ < mostExtensions)
            patience_.start(absencePatience);
        else
            setProblem(problem_ == Problem::starting ? Problem::notStarted : Problem::absent);
    });
}

void PluginHealth::help() {
    if (problem_ == Problem::noSocket)
        begin();
    else if (problem_ == Problem::absent || problem_ == Problem::notStarted)
        start();
}

void PluginHealth::start() {
    extensions_ = 0;
    setProblem(Problem::starting);
    waitAndSee();
    dependencies_.starter.start([this] {
        if (problem_ != Problem::starting)
            return;
        patience_.stop();
        setProblem(Problem::notStarted);
    });
}

void PluginHealth::setProblem(Problem problem) {
    if (std::exchange(problem_, problem) != problem)
        dependencies_.show(problem);
}
