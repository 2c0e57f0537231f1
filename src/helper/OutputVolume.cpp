#include "helper/OutputVolume.h"

#include "platform/base/SystemLog.h"

#include <QFileInfo>
#include <QProcessEnvironment>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace {

constexpr std::chrono::seconds longestCall{3};
constexpr int percentOfNotch = 5;
constexpr int mostNotches = 20; // 100 percent
constexpr const char* output = "@DEFAULT_AUDIO_SINK@";

} // namespace

OutputVolume::OutputVolume(QString tool) : tool_(std::move(tool)) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C")); // for the decimal point
    process_.setProcessEnvironment(environment);
    process_.setStandardInputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
    connect(&process_, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
        ended(status == QProcess::NormalExit && code == 0);
    });
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            ended(false);
    });
    patience_.setSingleShot(true);
    patience_.setInterval(longestCall);
    connect(&patience_, &QTimer::timeout, this, [this] {
        platform::systemLog(platform::LogPriority::warning, "%s doesn't end",
                            qUtf8Printable(tool_));
        process_.kill();
    });
}

OutputVolume::~OutputVolume() {
    process_.disconnect(this);
    process_.kill();
    process_.waitForFinished(1000);
}

void OutputVolume::refresh() {
    reads_ = true;
    next();
}

void OutputVolume::step(int notches) {
    notches_ = std::clamp(notches_ + notches, -mostNotches, mostNotches);
    next();
}

void OutputVolume::toggleMute() {
    toggles_ = !toggles_;
    next();
}

OutputVolume::Task OutputVolume::takeTask(QStringList& arguments) {
    if (const int notches = std::exchange(notches_, 0); notches != 0) {
        arguments = {QStringLiteral("set-volume"), QStringLiteral("--limit"), QStringLiteral("1.0"),
                     QLatin1String(output),
                     QString::number(std::abs(notches) * percentOfNotch) +
                         QLatin1String(notches > 0 ? "%+" : "%-")};
        return Task::step;
    }
    if (std::exchange(toggles_, false)) {
        arguments = {QStringLiteral("set-mute"), QLatin1String(output), QStringLiteral("toggle")};
        return Task::mute;
    }
    if (std::exchange(reads_, false)) {
        arguments = {QStringLiteral("get-volume"), QLatin1String(output)};
        return Task::read;
    }
    return Task::none;
}

void OutputVolume::next() {
    if (running_ != Task::none)
        return;
    QStringList arguments;
    running_ = takeTask(arguments);
    if (running_ == Task::none)
        return;
    if (running_ != Task::read)
        reads_ = true;
    start(arguments);
}

void OutputVolume::start(const QStringList& arguments) {
    if (!QFileInfo(tool_).isExecutable()) {
        running_ = Task::none;
        notches_ = 0;
        toggles_ = reads_ = false;
        set(std::nullopt);
        return;
    }
    patience_.start();
    process_.start(tool_, arguments, QIODevice::ReadOnly);
}

void OutputVolume::ended(bool succeeded) {
    patience_.stop();
    if (std::exchange(running_, Task::none) == Task::read)
        set(succeeded ? parse(process_.readAllStandardOutput()) : std::nullopt);
    process_.close();
    next();
}

void OutputVolume::set(const std::optional<State>& state) {
    if (std::exchange(state_, state) != state)
        Q_EMIT changed();
}

std::optional<OutputVolume::State> OutputVolume::parse(const QByteArray& text) {
    const QList<QByteArray> words = text.simplified().split(' ');
    bool isNumber = false;
    const double volume = words.size() > 1 ? words[1].toDouble(&isNumber) : 0;
    constexpr double largest = 100;
    if (words[0] != "Volume:" || !isNumber || !(volume >= 0 && volume <= largest))
        return std::nullopt;
    return State{static_cast<int>(std::lround(volume * 100)), words.contains("[MUTED]")};
}
