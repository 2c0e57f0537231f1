#pragma once

#include "helper/MenuEntry.h"
#include "helper/OutputVolume.h"
#include "helper/RunningApplication.h"

#include <map>
#include <optional>
#include <vector>

/// Composes the menu of the icon: the state of the output, the programs that play, and what the
/// application can be asked for. An entry keeps its id as long as its program is known, so that an
/// open menu can follow. Main thread only.
class TrayMenu {
  public:
    /// The whole tree. `programs` is nothing if the application does not run.
    MenuEntry compose(const std::optional<OutputVolume::State>& output,
                      const std::optional<std::vector<PlayingProgram>>& programs);

    /// "Volume 45 %", "Volume 45 %, muted"; empty if the state is not known.
    [[nodiscard]] static QString describe(const std::optional<OutputVolume::State>& output);

  private:
    void addPrograms(MenuEntry& menu, const std::vector<PlayingProgram>& programs);
    int idOf(const QString& program);

    std::map<QString, int> ids_; // of programs, by their paths
    int nextId_ = 0;
};
