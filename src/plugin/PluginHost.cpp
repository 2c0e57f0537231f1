#include "plugin/PluginHost.h"

#include <utility>

PluginHost::PluginHost(platform::RunLoop& loop)
    : programs_(loop, *this), server_(loop, *this), levels_(loop, graph_, programs_) {
    server_.start();
}

PluginHost::~PluginHost() {
    forgetServer();
}

void PluginHost::serverConnected() {
    levels_.attach(*server_.core());
}

void PluginHost::serverLost() {
    forgetServer();
}

void PluginHost::forgetServer() {
    levels_.detach();
    for (auto& [id, voice] : voices_)
        release(voice);
    voices_.clear();
    graph_.clear();
}

void PluginHost::globalAdded(const AudioGlobal& global) {
    globalRemoved(global.id);
    graph_.add(global);
    if (global.kind == AudioGlobal::Kind::node && graph_.isOutputStream(global.id)) {
        AudioStream::Listener& listener = *this;
        voices_[global.id].stream =
            std::make_unique<AudioStream>(*server_.registry(), global.id, listener);
    }
    levels_.review();
}

void PluginHost::globalRemoved(std::uint32_t id) {
    graph_.remove(id);
    const auto voice = voices_.find(id);
    if (voice != voices_.end()) {
        release(voice->second);
        voices_.erase(voice);
    }
    levels_.review();
}

void PluginHost::streamDescribed(AudioStream& stream) {
    identify(voices_.at(stream.id()));
    levels_.review();
}

void PluginHost::streamStateChanged(AudioStream&) {
    levels_.review();
}

void PluginHost::identify(Voice& voice) {
    AudioStream& stream = *voice.stream;
    if (voice.orphaned || stream.isInternal())
        return;
    platform::StreamEvidence evidence = graph_.evidenceOf(stream.id());
    stream.describeTo(evidence);
    const auto process = platform::identifyStream(evidence);
    if (!process)
        return;
    if (voice.program != nullptr) {
        if (voice.program->process().pid == process->pid)
            return;
        release(voice);
    }
    Program& program = programs_.programOf(*process);
    voice.program = &program;
    program.add(stream);
}

void PluginHost::release(Voice& voice) {
    Program* const program = std::exchange(voice.program, nullptr);
    if (program == nullptr)
        return;
    program->remove(*voice.stream);
    programs_.dropUnlessHeld(*program);
}

void PluginHost::programGoes(Program& program) {
    for (auto& [id, voice] : voices_) {
        if (voice.program != &program)
            continue;
        voice.program = nullptr;
        voice.orphaned = true;
    }
    levels_.review();
}

void PluginHost::connectionsChanged() {
    levels_.review();
}
