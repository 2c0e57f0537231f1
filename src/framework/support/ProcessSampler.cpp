#include "framework/support/ProcessSampler.h"

#include "platform/base/FileDescriptor.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/processes/ThreadStates.h"
#include "platform/processes/ToolRun.h"
#include "platform/text/Format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int rounds = 10;
constexpr std::size_t mostProcesses = 4;
constexpr int bySignal = 128; // statuses of what a signal has ended

std::vector<pid_t> processesNamed(const std::string& name) {
    constexpr std::size_t longestCommand = 15;
    std::vector<pid_t> found;
    for (const pid_t process : platform::processesOf(::geteuid())) {
        const auto path = platform::executablePath(process);
        const bool byFile = path && path->substr(path->rfind('/') + 1) == name;
        const bool byCommand = platform::commandName(process) == name.substr(0, longestCommand);
        if ((byFile || byCommand) && found.size() < mostProcesses)
            found.push_back(process);
    }
    return found;
}

} // namespace

/// The file that is written to, deleted with the object.
class ProcessSampler::Output {
  public:
    explicit Output(const QString& name)
        : path_(QDir(QDir::tempPath())
                    .filePath(platform::formatted(QStringLiteral("Sample%@.txt"),
                                                  QFileInfo(name).fileName()))) {
        QFile::remove(path_); // of a run that was killed
        file_.reset(::open(QFile::encodeName(path_).constData(),
                           O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_APPEND | O_CLOEXEC,
                           S_IRUSR | S_IWUSR));
    }
    ~Output() {
        if (file_)
            QFile::remove(path_);
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    explicit operator bool() const noexcept { return static_cast<bool>(file_); }
    int descriptor() const noexcept { return file_.get(); }

    off_t size() const noexcept {
        struct stat status {};
        return ::fstat(file_.get(), &status) == 0 ? status.st_size : 0;
    }

    void write(const std::string& text) const {
        const ssize_t written = ::write(file_.get(), text.data(), text.size());
        static_cast<void>(written); // a full disk makes the sample shorter
    }

    QString text() const {
        constexpr qint64 most = qint64{4} << 20U;
        QFile file(path_);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(most)) : QString();
    }

  private:
    const QString path_;
    platform::FileDescriptor file_;
};

void ProcessSampler::waitForNextRound() const {
    std::this_thread::sleep_for(tools_.sampleTime / rounds);
}

/// Whether the debugger has told anything. It fails too if it cannot follow a stack to its end.
bool ProcessSampler::sampleOnce(const std::vector<std::string>& debugger, Output& output) const {
    const auto limit = std::chrono::duration_cast<std::chrono::seconds>(tools_.toolTime).count();
    platform::ToolCall call;
    call.arguments = {tools_.timeout, "-s", "KILL", std::to_string(std::max<long>(1, limit))};
    call.arguments.insert(call.arguments.end(), debugger.begin(), debugger.end());
    call.timeLimit =
        2 * tools_.toolTime + std::chrono::seconds(2); // the other program's is shorter
    call.outputDescriptor = output.descriptor();
    const off_t before = output.size();
    const auto result = platform::runTool(call);
    return result && result->status < bySignal && output.size() > before;
}

bool ProcessSampler::sampleByStacks(pid_t process, Output& output) const {
    const std::string number = std::to_string(process);
    if (::access(tools_.euStack.c_str(), X_OK) != 0)
        return ::access(tools_.gdb.c_str(), X_OK) == 0 &&
               sampleOnce({tools_.gdb, "-nx", "-batch", "-p", number, "-ex", "thread apply all bt"},
                          output);
    for (int round = 0; round < rounds; ++round) {
        if (round > 0)
            waitForNextRound();
        if (!sampleOnce({tools_.euStack, "-p", number}, output))
            return round > 0; // it may have ended
    }
    return true;
}

void ProcessSampler::sampleStates(pid_t process, Output& output) const {
    for (int round = 0; round < rounds; ++round) {
        if (round > 0)
            waitForNextRound();
        output.write(platform::threadStates(process) + "\n");
    }
}

std::optional<QString> ProcessSampler::sample(const QString& name) const {
    const std::vector<pid_t> processes = processesNamed(name.toStdString());
    if (processes.empty())
        return std::nullopt;
    Output output(name);
    if (!output)
        return std::nullopt;
    for (const pid_t process : processes) {
        output.write("Process " + std::to_string(process) + "\n\n");
        if (!sampleByStacks(process, output))
            sampleStates(process, output);
    }
    return output.text();
}
