#pragma once

#include "framework/support/QNSupportUtils.h"

#include <QString>

#include <optional>

/// The profile of the machine and its sound system, collected by the tools. What is played and the
/// titles of windows are left out. Blocks; any thread.
class SystemProfile {
  public:
    explicit SystemProfile(const QNSupportUtils::Tools& tools) : tools_(tools) {}

    /// A screen of text, then the session manager's own status.
    [[nodiscard]] QString brief() const;

    /// XML: the same facts, the hardware as lshw lists it, the objects of the sound server with
    /// their properties, and the state of its services.
    [[nodiscard]] QString full() const;

  private:
    struct Fact {
        const char* name;
        QString value;
    };

    QList<Fact> facts() const;
    QStringList soundDevices() const;
    QString versionOf(const std::string& program) const;
    QByteArray outputOf(const std::vector<std::string>& arguments, bool isLong = false) const;

    const QNSupportUtils::Tools& tools_;
};
