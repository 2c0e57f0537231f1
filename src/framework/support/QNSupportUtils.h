#pragma once

#include "platform/bundle/Bundle.h"

#include <QList>
#include <QUrl>

#include <optional>

/// Facts for support reports. Any thread.
class QNSupportUtils {
  public:
    QNSupportUtils() = delete;

    /// The sources of the bundle's install manifest that this user may execute or that are bundles.
    /// Nothing if there is no usable manifest.
    [[nodiscard]] static std::optional<QList<QUrl>>
    installerExecutablesAndBundles(const platform::Bundle& bundle = platform::Bundle::main());
};
