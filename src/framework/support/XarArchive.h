#pragma once

#include "framework/support/EntryWriter.h"
#include "platform/base/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>

struct archive;

/// A xar archive being written, to a new file that only this user can read.
///
/// Once something could not be written, the archive is broken: every later call fails. One thread
/// at a time.
class XarArchive final : public EntryWriter {
  public:
    /// Null, with errno set, if there is such a file or it cannot be made.
    [[nodiscard]] static std::unique_ptr<XarArchive> archiveForWritingAtPath(const QString& path);

    ~XarArchive() override;

    /// The library's handle, for setting options before anything is added.
    [[nodiscard]] archive* xar() const noexcept { return archive_.get(); }

    /// Finishes the file. False if it is broken.
    [[nodiscard]] bool closeArchive();

  protected:
    bool writeEntry(const QByteArray& data, const QString& name) override;

  private:
    struct Free {
        void operator()(archive* one) const noexcept;
    };

    explicit XarArchive(platform::FileDescriptor file);

    bool write(const QByteArray& data, const QString& name);

    const platform::FileDescriptor file_;
    std::unique_ptr<archive, Free> archive_;
    std::int64_t entries_ = 0;
    bool isOpen_ = false;
    bool isWhole_ = true;
};
