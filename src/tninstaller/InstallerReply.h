#pragma once

#include "tninstaller/InstallFailure.h"

#include <cstddef>
#include <string>

/// What the tool prints at its end.
struct InstallerReply {
    InstallCode code = InstallCode::success;
    std::size_t index = 0; ///< of the item that failed

    /// A property list in XML: a dictionary with "MVInstallerErrorKey" and "MVInstallerIndexKey".
    [[nodiscard]] std::string propertyList() const;
};
