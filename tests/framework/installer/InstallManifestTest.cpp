#include "framework/installer/QNInstallBOM.h"
#include "framework/support/QNSupportUtils.h"

#include "platform/defaults/PropertyList.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

QVariantMap entry(const QVariantMap& changes = {}) {
    QVariantMap entry{{"From", "Contents/tool"}, {"To", "/opt/tool"}, {"Mask", "644"}};
    entry.insert(changes);
    return entry;
}

QVariantMap manifestOf(const QVariantList& install, const QVariantList& uninstall = {},
                       const QVariantMap& changes = {}) {
    QVariantMap section{{"Resources", install}};
    section.insert(changes);
    return {{"Install", section}, {"Uninstall", QVariantMap{{"Resources", uninstall}}}};
}

void write(const fs::path& file, const QByteArray& content = "content") {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content.toStdString();
}

class InstallManifest : public testing::Test {
  protected:
    std::optional<QNInstallBOM> read(const QVariantMap& dictionary) const {
        return QNInstallBOM::BOMWithDictionary(dictionary, root());
    }

    QNInstallResource only(const QVariantMap& changes) const {
        return QNInstallResource::installResourceWithDictionary(entry(changes), root());
    }

    QUrl root() const { return QUrl::fromLocalFile(QString::fromStdString(bundlePath())); }
    std::string bundlePath() const { return folder_.path() / "A.app"; }
    fs::path contents() const { return folder_.path() / "A.app/Contents"; }
    fs::path manifestFile() const { return contents() / "Resources/BOM.plist"; }

    platform::Bundle bundle() const { return platform::Bundle(contents()); }

    support::SystemLogRecorder log;

  private:
    const support::PrivateFolder folder_;
};

} // namespace

TEST_F(InstallManifest, EachFaultMakesItNoneWithOneLineThatSaysWhy) {
    const struct {
        QVariantMap manifest;
        const char* reason;
    } cases[] = {
        {{}, "nil @ "},
        {{{"Install", "text"}}, "nil @ "},
        {{{"Install", QVariantMap()}}, "nil @ "},
        {{{"Install", QVariantMap{{"Resources", QVariantList()}}}}, "nil @ "},
        {{{"Install", QVariantMap{{"Resources", QVariantList()}}}, {"Uninstall", QVariantMap()}},
         "nil @ "},
        {manifestOf({"text"}), "nil @ "},
        {manifestOf({entry({{"From", QVariant()}})}), "nil @ "},
        {manifestOf({entry({{"User", "no-such-user"}})}), "nil @ "},
        {manifestOf({entry({{"Group", "no-such-group"}})}), "nil @ "},
        {manifestOf({entry({{"User", 0}})}), "nil @ "},
        {manifestOf({entry({{"Mask", QVariant()}})}), "nil @ "},
        {manifestOf({entry({{"Mask", "648"}})}), "nil @ "},
        {manifestOf({entry({{"Mask", "10000"}})}), "nil @ "},
        {manifestOf({entry(), entry({{"To", "opt/tool"}})}), "Invalid resource destination."},
        {manifestOf({entry({{"To", ""}})}), "Invalid resource destination."},
        {manifestOf({}, {QVariantMap()}), "nil @ "},
        {manifestOf({}, {QVariantMap{{"Path", "opt"}}}), "Invalid resource path."},
        {manifestOf({}, {QVariantMap{{"Path", "~root/x"}}}), "Invalid resource path."},
    };
    for (const auto& [manifest, reason] : cases) {
        log.clear();
        EXPECT_FALSE(read(manifest)) << reason;
        ASSERT_EQ(log.lines().size(), 1U) << reason;
        const std::string line = log.lines()[0].text;
        EXPECT_TRUE(line.starts_with("Exception @ 114: " + std::string(reason))) << line;
        EXPECT_NE(line.find(" Backtrace: 0 "), std::string::npos) << line;
    }
}

TEST_F(InstallManifest, InstallEntriesSayFromWhereToWhereWhoseAndWithWhichPermissions) {
    const QNInstallResource plain = only({});
    EXPECT_EQ(plain.from().toLocalFile().toStdString(), bundlePath() + "/Contents/tool");
    EXPECT_EQ(plain.to(), QUrl("file:///opt/tool"));
    EXPECT_EQ(plain.mask(), 0644U);
    EXPECT_EQ(plain.uid(), ::geteuid());
    EXPECT_EQ(plain.gid(), ::getegid());

    const QNInstallResource owned =
        only({{"User", "daemon"}, {"Group", "root"}, {"To", "/opt//a/../tool/"}, {"Mask", "4755"}});
    EXPECT_EQ(owned.uid(), 1U);
    EXPECT_EQ(owned.gid(), 0U);
    EXPECT_EQ(owned.mask(), 04755U);
    EXPECT_EQ(owned.to(), QUrl("file:///opt/tool"));
    EXPECT_EQ(owned, plain);
    EXPECT_EQ(owned.hash(), plain.hash());

    for (const char* name : {"a b", "a%20b", "a?b#c", "a:b", "\xC3\xA9"}) {
        const auto odd = only({{"From", QString::fromUtf8(name)}});
        EXPECT_EQ(odd.from().toLocalFile().toStdString(), bundlePath() + "/" + name);
        EXPECT_FALSE(odd == plain);
    }
}

TEST_F(InstallManifest, SectionsKeepTheirOrderAndTheirSwitches) {
    qputenv("HOME", "/home/some one");
    const auto manifest = read(manifestOf(
        {entry({{"To", ""}}), entry({{"From", "b"}})},
        {QVariantMap{{"Path", "~/x/../y"}, {"IgnoreForced", true}}, QVariantMap{{"Path", "/z"}}},
        {{"ForceClean", true}, {"DefaultLocation", "/usr/local/bin"}}));
    ASSERT_TRUE(manifest);
    EXPECT_TRUE(manifest->forceCleanInstall());
    EXPECT_EQ(manifest->defaultLocation(), QUrl("file:///usr/local/bin/"));
    ASSERT_EQ(manifest->installResources().size(), 2U);
    EXPECT_EQ(manifest->installResources()[0].to(), QUrl("file:///usr/local/bin/tool"));
    EXPECT_EQ(manifest->installResources()[1].to(), QUrl("file:///opt/tool"));
    ASSERT_EQ(manifest->uninstallResources().size(), 2U);
    EXPECT_EQ(manifest->uninstallResources()[0].path(), QUrl("file:///home/some%20one/y"));
    EXPECT_TRUE(manifest->uninstallResources()[0].ignoreForcedClean());
    EXPECT_EQ(manifest->uninstallResources()[1].path(), QUrl("file:///z"));
    EXPECT_FALSE(manifest->uninstallResources()[1].ignoreForcedClean());

    const auto bare = read(manifestOf({}, {}, {{"DefaultLocation", ""}}));
    ASSERT_TRUE(bare);
    EXPECT_FALSE(bare->forceCleanInstall());
    EXPECT_FALSE(bare->defaultLocation());
}

TEST_F(InstallManifest, FilterSeesEachInstallEntryFirst) {
    const auto manifest = QNInstallBOM::BOMWithDictionary(manifestOf({entry({{"To", "nowhere"}})}),
                                                          root(), [](QVariantMap entry) {
                                                              entry["To"] = "/elsewhere";
                                                              return entry;
                                                          });
    ASSERT_TRUE(manifest);
    EXPECT_EQ(manifest->installResources()[0].to(), QUrl("file:///elsewhere"));
}

TEST_F(InstallManifest, SourceThatIsNotTheFileThatWasReadIsNotValid) {
    const fs::path tool = contents() / "tool";
    const fs::path other = contents() / "other";
    const struct {
        const char* what;
        void (*change)(const fs::path& tool, const fs::path& other);
    } changes[] = {
        {"removed", [](const fs::path& file, const fs::path&) { fs::remove(file); }},
        {"replaced", [](const fs::path& file, const fs::path& next) { fs::rename(next, file); }},
        {"a link",
         [](const fs::path& file, const fs::path& next) {
             fs::remove(file);
             fs::create_symlink(next, file);
         }},
    };
    for (const auto& [what, change] : changes) {
        fs::remove(tool);
        write(tool);
        write(other);
        const QNInstallResource resource = only({});
        QNInstallError error;
        EXPECT_TRUE(resource.validateAndReturnError(&error)) << what;
        EXPECT_FALSE(error.code) << what;
        change(tool, other);
        EXPECT_FALSE(resource.validateAndReturnError(&error)) << what;
        EXPECT_EQ(error.code, std::error_code(1, std::generic_category())) << what;
        EXPECT_EQ(error.failingUrl, resource.from().toString()) << what;
    }
    EXPECT_FALSE(only({}).validateAndReturnError()) << "a link from the start";
    EXPECT_FALSE(only({{"From", "none"}}).validateAndReturnError()) << "nothing from the start";
}

TEST_F(InstallManifest, OnlyARegularFileThatCanBeParsedIsRead) {
    EXPECT_FALSE(QNInstallBOM::BOMURLForBundle(bundle()));
    EXPECT_FALSE(QNInstallBOM::BOMWithBundle(bundle()));
    write(manifestFile(), "damaged");
    EXPECT_FALSE(QNInstallBOM::BOMDictionaryWithBundle(bundle()));
    write(manifestFile(), platform::propertyListXml(QVariantList{1}));
    EXPECT_FALSE(QNInstallBOM::BOMDictionaryWithBundle(bundle()));

    const QByteArray good = platform::propertyListXml(manifestOf({entry()}));
    write(manifestFile(), good);
    EXPECT_TRUE(QNInstallBOM::BOMURLForBundle(bundle()));
    EXPECT_TRUE(QNInstallBOM::BOMWithBundle(bundle()));

    fs::rename(manifestFile(), contents() / "real.plist");
    fs::create_symlink("../real.plist", manifestFile());
    EXPECT_TRUE(QNInstallBOM::BOMURLForBundle(bundle()));
    EXPECT_FALSE(QNInstallBOM::BOMDictionaryWithBundle(bundle()));
    EXPECT_FALSE(QNInstallBOM::BOMWithBundle(bundle()));

    fs::remove(manifestFile());
    ASSERT_EQ(::mkfifo(manifestFile().c_str(), 0600), 0);
    EXPECT_FALSE(QNInstallBOM::BOMDictionaryWithBundle(bundle())) << "and returns at all";
}

TEST_F(InstallManifest, SupportReportsListWhatMayBeExecutedAndBundles) {
    EXPECT_EQ(QNSupportUtils::installerExecutablesAndBundles(bundle()), std::nullopt);
    write(contents() / "tool");
    fs::permissions(contents() / "tool", fs::perms::owner_all);
    write(contents() / "text");
    fs::permissions(contents() / "text", fs::perms::owner_read);
    write(contents() / "P.plugin/Contents/Info.plist");
    fs::create_directory(contents() / "folder");
    QVariantList entries;
    for (const char* name : {"text", "tool", "folder", "P.plugin", "missing"})
        entries.append(entry({{"From", QString("Contents/%1").arg(name)}}));
    write(manifestFile(), platform::propertyListXml(manifestOf(entries)));

    const auto found = QNSupportUtils::installerExecutablesAndBundles(bundle());
    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), 2);
    EXPECT_EQ(found->at(0).fileName(), "tool");
    EXPECT_EQ(found->at(1).fileName(), "P.plugin");
}
