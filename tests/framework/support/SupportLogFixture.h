#pragma once

#include "framework/support/QNSupportLog.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

/// Makes support reports in a folder of its own.
class SupportLogTest : public testing::Test {
  protected:
    using Entries = std::map<std::string, std::string>;

    static SupportSources plainSources() {
        return {[] { return QStringList{"Tonvale"}; },
                [](bool brief) { return QString(brief ? "brief" : "full"); },
                [] { return QString(); },
                [](const QStringList& names) { return QString("log of " + names.join(',')); },
                [](const QString& name) { return QString("sample of " + name); }};
    }

    /// A bundle with this server.
    platform::Bundle bundle(const std::string& server = "") const {
        const std::filesystem::path contents = folder.path() / "A.app/Contents";
        std::filesystem::create_directories(contents);
        std::ofstream(contents / "Info.plist")
            << "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Tonvale</string>"
               "<key>CFBundleShortVersionString</key><string>1.2</string>"
               "<key>CFBundleVersion</key><string>34</string>"
               "<key>QNBuildIdentifier</key><string>abc</string>"
               "<key>QNBuildTimestamp</key><string>99</string>"
               "<key>SupportServer</key><string>"
            << server << "</string></dict></plist>";
        return platform::Bundle(contents);
    }

    /// The archive that a report becomes.
    QVariantMap archiveOf(QNSupportLog& report) {
        QVariantMap file;
        report.generatePostDictionary(
            [this](const QString& text, unsigned stage) {
                statuses.push_back(QString::number(stage) + ' ' + text);
            },
            [&](const QVariantMap& form) { file = form.value("file").toMap(); });
        EXPECT_TRUE(support::waitUntil([&] { return !file.isEmpty(); }));
        return file;
    }

    /// The files in an archive, by a program that knows the format.
    Entries extract(const QByteArray& archive, const std::vector<std::string>& command) {
        const std::filesystem::path file = folder.path() / "x.xar";
        std::ofstream(file, std::ios::binary) << archive.toStdString();
        const std::filesystem::path target =
            folder.path() / ("extracted" + std::to_string(++extractions));
        std::filesystem::create_directory(target);
        std::vector<std::string> arguments{"env", "-C", target, "LC_ALL=C.UTF-8"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        arguments.push_back(file);
        const auto result = support::runCommand(arguments);
        EXPECT_EQ(result.status, 0) << result.output;
        Entries entries;
        for (const auto& item : std::filesystem::recursive_directory_iterator(target)) {
            // One of the programs adds the archive's table of contents.
            if (item.is_regular_file() && item.path().filename() != "[TOC].xml")
                entries[std::filesystem::relative(item.path(), target)] =
                    support::contentOf(item.path());
        }
        return entries;
    }
    Entries extract(const QByteArray& archive) { return extract(archive, {"bsdtar", "-xf"}); }
    Entries extract(const QVariantMap& file) {
        return extract(file["QNUploaderPostFileData"].toByteArray());
    }

    void write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories((folder.path() / name).parent_path());
        std::ofstream(folder.path() / name, std::ios::binary) << content;
    }
    QString path(const std::string& name) const {
        return QString::fromStdString(folder.path() / name);
    }
    std::size_t filesIn(const std::string& name) const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.path() / name), {}));
    }

    const support::PrivateFolder folder;
    support::SystemLogRecorder log;
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue{loop};
    const platform::RunLoopNotifier notifier{loop};
    QStringList statuses;
    int extractions = 0;
};
