#pragma once

#include <QWidget>

#include <cstdint>
#include <map>
#include <memory>

class MVComm;
class QLabel;
class QVBoxLayout;

/// The window: one row for each connected program with its name, volume, level and mute. A person's
/// change becomes a command to the plug-ins; the façade's callbacks feed the rest. Main thread.
class VolumeWindow final : public QWidget {
    Q_OBJECT

  public:
    /// `comm` must outlive the window.
    explicit VolumeWindow(MVComm& comm);
    ~VolumeWindow() override;

    /// Makes the rows those of the programs that are connected now.
    void updateConnections();

    /// Shows a level, linear from 0 to 1 (anything else is clamped, NaN is 0), in the program's
    /// row; without such a row nothing happens.
    void handleActivity(std::uint32_t pid, float level);

    /// What stands in the window while no program is connected, in place of the usual hint.
    void showProblem(const QString& text);

  private:
    class Row;

    void send(std::int32_t type, std::uint32_t pid, int value);

    MVComm& comm_;
    QLabel* notice_;
    QVBoxLayout* rowsLayout_;
    std::map<std::uint32_t, std::unique_ptr<Row>> rows_; // by pid
};
