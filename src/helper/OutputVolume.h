#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QTimer>

#include <optional>

/// Volume and mute of the default output, read and set with the session manager's command line
/// tool. One call of the tool runs at a time: what is asked for meanwhile is put together for the
/// next, so that a wheel never starts more than it can serve. Without the tool, or without an
/// output, nothing is known and nothing happens. Main thread only.
class OutputVolume final : public QObject {
    Q_OBJECT

  public:
    struct State {
        int percent; ///< as mixers show it
        bool muted;

        bool operator==(const State&) const = default;
    };

    /// `tool` is the absolute path of wpctl.
    explicit OutputVolume(QString tool);
    ~OutputVolume() override;

    /// As last read; nothing if it is not known.
    [[nodiscard]] const std::optional<State>& state() const noexcept { return state_; }

    /// Reads the state anew, which changed() reports if it is another one.
    void refresh();

    /// Changes the volume by 5 percent a notch, to 100 at most.
    void step(int notches);

    void toggleMute();

    /// The state in what the tool prints: "Volume: 0.45 [MUTED]". Nothing in other texts.
    [[nodiscard]] static std::optional<State> parse(const QByteArray& text);

  Q_SIGNALS:
    void changed();

  private:
    enum class Task { none, step, mute, read };

    void next();
    Task takeTask(QStringList& arguments);
    void start(const QStringList& arguments);
    void ended(bool succeeded);
    void set(const std::optional<State>& state);

    const QString tool_;
    QProcess process_;
    QTimer patience_;
    std::optional<State> state_;
    Task running_ = Task::none;
    int notches_ = 0; // that are still to be done, like those below
    bool toggles_ = false;
    bool reads_ = false;
};
