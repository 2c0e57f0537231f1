#include "tninstaller/Removal.h"

#include "tninstaller/InstallFailure.h"
#include "tninstaller/InstallLock.h"
#include "tninstaller/Stage.h"
#include "tninstaller/TreeRemoval.h"

#include <optional>

void removeFrom(const std::string& path, const std::string& name, GuardedFolder::Trust trust,
                Others others) {
    try {
        const auto stage = Stage::find(path, trust);
        if (!stage)
            return;
        std::optional<InstallLock> lock;
        if (others == Others::keptOut)
            lock.emplace(stage->folder());
        const bool isThere = stage->takeAway(name);
        lock.reset();
        if (isThere)
            stage->clear();
    } catch (const InstallFailure& failure) {
        if (failure.code() != InstallCode::noRoom)
            throw;
        if (const auto folder = GuardedFolder::find(path, trust))
            removeTree(folder->descriptor(), name);
    }
}
