#include "Situation.h"

#include "naming/DisambiguatedName.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace fs = std::filesystem;

// In the words of GoogleTest's messages.
static void PrintTo(const ApplicationIdentity& identity, std::ostream* stream) {
    *stream << "\n  name " << identity.name << "\n  pid " << identity.mainProcess << "\n  entry "
            << identity.entry << "\n  path " << identity.executable << "\n  icon " << identity.icon
            << "\n  evidence " << describe(identity.evidence)
            << (identity.showsPages ? "\n  shows pages" : "");
}

namespace {

std::vector<fs::path> situations() {
    std::vector<fs::path> files;
    for (const auto& each : fs::directory_iterator(TONVALE_SITUATIONS)) {
        if (each.path().extension() == ".ini" && each.path().stem() != "session")
            files.push_back(each.path());
    }
    std::ranges::sort(files);
    return files;
}

std::string testName(const testing::TestParamInfo<fs::path>& info) {
    std::string name = info.param.stem();
    std::ranges::replace(name, '-', '_');
    return name;
}

class SituationTest : public testing::TestWithParam<fs::path> {
  protected:
    const Situation situation_{fs::path(TONVALE_SITUATIONS) / "session.ini", GetParam()};
    ApplicationResolver resolver_{situation_.entries(), situation_.processes()};

    ApplicationIdentity answer(const Situation::Question& question) {
        if (question.process == 0)
            return resolver_.resolveSandbox(question.sandbox, question.client);
        const auto start = situation_.processes().startTime(question.process);
        return resolver_.resolve(question.process, start.value_or(0), question.client);
    }

    /// What it is called while those play.
    std::string nameWhile(const std::vector<pid_t>& others, const ApplicationIdentity& found) {
        std::vector<NamedProgram> there;
        for (const pid_t other : others) {
            const auto start = situation_.processes().startTime(other);
            const auto& identity = resolver_.resolve(other, start.value_or(0));
            there.push_back(
                {disambiguatedName(identity.name, identity.folders, there), identity.folders});
        }
        return disambiguatedName(found.name, found.folders, there);
    }

    std::vector<ApplicationIdentity> listed() const {
        return regularApplications(situation_.entries(), situation_.processes(),
                                   {Situation::user, "2"});
    }
};

} // namespace

TEST_P(SituationTest, CountsAsVisibleWhenTheUserCanSeeIt) {
    for (const Situation::Question& question : situation_.questions()) {
        ApplicationIdentity found = answer(question);
        found.entryPath.clear(); // lies in the test's own folder
        found.name = nameWhile(question.beside, found);
        found.folders.clear();
        const auto start = situation_.processes().startTime(found.mainProcess);
        EXPECT_EQ(found.mainStartTime, start.value_or(0)) << question.title;
        found.mainStartTime = 0;
        EXPECT_EQ(found, question.expected) << question.title;
    }
}

TEST_P(SituationTest, IsTheSameFromBothSides) {
    std::vector<std::string> names;
    for (const auto& application : listed())
        names.push_back(application.name);
    EXPECT_EQ(names, situation_.running());
    for (const auto& application : listed()) {
        for (const Situation::Question& question : situation_.questions()) {
            const ApplicationIdentity found = answer(question);
            if (found.name != application.name)
                continue;
            EXPECT_EQ(found.entry, application.entry);
            EXPECT_EQ(found.icon, application.icon);
            // Several processes may be one application; the list has the first.
            EXPECT_LE(application.mainProcess,
                      found.mainProcess == 0 ? application.mainProcess : found.mainProcess);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Recorded, SituationTest, testing::ValuesIn(situations()), testName);
