#include "support/PrivateAudioSession.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace support {

namespace {

bool serverAnswers() {
    return runCommand({"pw-cli", "info", "0"}).status == 0;
}

bool defaultSinkIsChosen() {
    const auto metadata = runCommand({"pw-metadata", "-n", "default", "0", "default.audio.sink"});
    return metadata.output.find(PrivateAudioSession::sink) != std::string::npos;
}

bool pulseServiceKnowsSink() {
    const auto answer = runCommand({"pactl", "get-default-sink"});
    return answer.status == 0 && answer.output == std::string(PrivateAudioSession::sink) + "\n";
}

std::string tail(const std::string& text) {
    constexpr std::size_t enough = 2000;
    return text.substr(text.size() - std::min(text.size(), enough));
}

} // namespace

PrivateAudioSession::PrivateAudioSession(Memory memory)
    : runtimeVariable_("XDG_RUNTIME_DIR", runtime_.path()) {
    std::filesystem::copy(TONVALE_SESSION_CONFIG, folder_.path() / "config",
                          std::filesystem::copy_options::recursive);
    if (memory == Memory::kept)
        std::filesystem::remove(folder_.path() / "config/wireplumber/main.lua.d/80-no-memory.lua");
    // The service fails to start when a client makes this folder in the same moment.
    std::filesystem::create_directory(runtime_.path() / "pulse");
    std::filesystem::permissions(runtime_.path() / "pulse", std::filesystem::perms::owner_all);
    services_.push_back({server, serverAnswers, nullptr});
    services_.push_back({sessionManager, defaultSinkIsChosen, nullptr});
    services_.push_back({pulseService, pulseServiceKnowsSink, nullptr});
    for (Service& service : services_)
        start(service);
}

PrivateAudioSession::~PrivateAudioSession() {
    while (!services_.empty())
        services_.pop_back();
}

void PrivateAudioSession::stop(std::string_view service, int signal) {
    Service& named = find(service);
    if (named.process)
        named.process->stop(signal);
    named.process.reset();
}

void PrivateAudioSession::start(std::string_view service) {
    start(find(service));
}

void PrivateAudioSession::restart(std::string_view service) {
    if (service != server) {
        stop(service);
        start(service);
        return;
    }
    for (const char* name : {pulseService, sessionManager, server})
        stop(name);
    for (const char* name : {server, sessionManager, pulseService})
        start(name);
}

pid_t PrivateAudioSession::processOf(std::string_view service) {
    const Service& named = find(service);
    return named.process && named.process->isRunning() ? named.process->pid() : 0;
}

PrivateAudioSession::Service& PrivateAudioSession::find(std::string_view service) {
    const auto found = std::ranges::find_if(
        services_, [&](const Service& candidate) { return candidate.name == service; });
    if (found == services_.end())
        throw std::runtime_error("no such service: " + std::string(service));
    return *found;
}

void PrivateAudioSession::start(Service& service) {
    ChildProcess::Options options;
    options.environment = {{"XDG_CONFIG_HOME", folder_.path() / "config"},
                           {"XDG_STATE_HOME", folder_.path() / "state"}};
    service.process =
        std::make_unique<ChildProcess>(std::vector<std::string>{service.name}, options);
    ChildProcess& process = *service.process;
    const auto decided = [&] { return !process.isRunning() || service.isReady(); };
    if (!waitUntil(decided) || !process.isRunning())
        throw std::runtime_error(std::string(service.name) +
                                 " did not come up: " + tail(process.output()));
}

} // namespace support
