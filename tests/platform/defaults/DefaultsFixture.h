#pragma once

#include "platform/defaults/DefaultsFileCalls.h"
#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"

#include <QByteArray>
#include <QVariant>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

/// Calls to the system that fail with an error number, as long as it is not 0.
class FailingCalls : public platform::DefaultsFileCalls {
  public:
    std::atomic<int> openError = 0; // of opening for reading
    std::atomic<int> readError = 0;
    std::atomic<int> writeError = 0;
    std::atomic<int> syncError = 0;
    std::atomic<int> renameError = 0;
    std::atomic<unsigned> opens = 0;
    std::atomic<unsigned> renames = 0;

    int open(const char* path, int flags, mode_t mode) noexcept override {
        ++opens;
        const bool isForReading = (flags & O_ACCMODE) == O_RDONLY;
        return isForReading && fails(openError) ? -1 : DefaultsFileCalls::open(path, flags, mode);
    }
    ssize_t read(int file, void* buffer, std::size_t size) noexcept override {
        return fails(readError) ? -1 : DefaultsFileCalls::read(file, buffer, size);
    }
    ssize_t write(int file, const void* bytes, std::size_t size) noexcept override {
        // Half of it, as a disk that is nearly full does.
        DefaultsFileCalls::write(file, bytes, writeError ? size / 2 : 0);
        return fails(writeError) ? -1 : DefaultsFileCalls::write(file, bytes, size);
    }
    int sync(int file) noexcept override {
        return fails(syncError) ? -1 : DefaultsFileCalls::sync(file);
    }
    int rename(const char* from, const char* to) noexcept override {
        ++renames;
        return fails(renameError) ? -1 : DefaultsFileCalls::rename(from, to);
    }

  private:
    static bool fails(const std::atomic<int>& error) noexcept {
        errno = error;
        return error != 0;
    }
};

/// A folder for the file, which does not exist yet, and what is told of trouble with it.
class DefaultsFixture : public testing::Test {
  public:
    ~DefaultsFixture() override { platform::UserDefaults::setReporter(nullptr); }
    DefaultsFixture(const DefaultsFixture&) = delete;
    DefaultsFixture& operator=(const DefaultsFixture&) = delete;

  protected:
    DefaultsFixture() {
        platform::UserDefaults::setReporter([this](const platform::DefaultsError& trouble) {
            const std::lock_guard lock(mutex_);
            troubles_.push_back(trouble);
        });
    }

    std::vector<platform::DefaultsError> troubles() const {
        const std::lock_guard lock(mutex_);
        return troubles_;
    }

    static void writeBytes(const std::filesystem::path& file, const QByteArray& bytes) {
        std::ofstream(file, std::ios::binary)
            .write(bytes.constData(), static_cast<std::streamsize>(bytes.size()));
    }

    static QByteArray readBytes(const std::filesystem::path& file) {
        return QByteArray::fromStdString(support::contentOf(file));
    }

    /// What another program sees and does.
    QVariantMap inFile() const {
        return platform::parsePropertyList(readBytes(path_)).value_or(QVariant()).toMap();
    }
    void writeFile(const QVariantMap& values) const {
        writeBytes(path_, platform::propertyListXml(values));
    }

    /// The names in the folder, without that of the lock, in their order.
    std::vector<std::string> filesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_.parent_path())) {
            if (entry.path().extension() != ".lock")
                names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    const support::PrivateFolder folder_;
    const std::filesystem::path path_ = folder_.path() / "test.plist";
    FailingCalls calls_;

  private:
    mutable std::mutex mutex_;
    std::vector<platform::DefaultsError> troubles_; // guarded by mutex_
};
