#include "tonvalectl/Verbs.h"

#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

using Names = std::set<std::string>;

Names split(const std::string& words) {
    std::istringstream stream(words);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string contentOf(const std::string& file) {
    std::ifstream stream(TONVALE_SOURCE_FOLDER "/" + file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// What is between two texts of a file, both of which it has.
std::string part(const std::string& file, const std::string& begin, const std::string& end) {
    const std::string text = contentOf(file);
    const std::size_t from = text.find(begin);
    const std::size_t to = from != std::string::npos ? text.find(end, from + 1) : from;
    EXPECT_NE(to, std::string::npos) << file << " has no " << begin << " or " << end;
    return to != std::string::npos ? text.substr(from, to - from) : "";
}

/// What the first group of `pattern` is, wherever it fits.
Names found(const std::string& text, const char* pattern) {
    const std::regex regex(pattern);
    Names names;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

Names declaredVerbs() {
    Names names;
    for (const Verb& verb : verbs())
        names.insert(verb.word);
    return names;
}

Names declaredOptions() {
    Names names{"--help", "--version"};
    for (const Option& option : options())
        names.insert(option.word);
    return names;
}

/// "set NAME PERCENT"
Names declaredForms() {
    Names forms;
    for (const Verb& verb : verbs())
        forms.insert(verb.word + std::string(*verb.arguments != '\0' ? " " : "") + verb.arguments);
    return forms;
}

/// What bash offers behind "tonvalectl" and a verb.
Names offeredByBash(const std::string& verb, const std::string& typed) {
    const std::string file = TONVALE_SOURCE_FOLDER "/resources/completions/tonvalectl.bash";
    const std::string script = ". '" + file + "'; COMP_WORDS=(tonvalectl " + verb + " '" + typed +
                               "') COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _tonvalectl; "
                               "printf '%s\\n' \"${COMPREPLY[@]}\"";
    return split(support::runCommand({"bash", "-c", script}).output);
}

} // namespace

TEST(VerbsTest, BashOffersEachVerbAndItsOptions) {
    EXPECT_EQ(offeredByBash("", ""), declaredVerbs());
    EXPECT_EQ(offeredByBash("", "--"), (Names{"--help", "--version"}));
    for (const Verb& verb : verbs()) {
        Names expected;
        for (const Option& option : options()) {
            if (split(option.verbs).contains(verb.word))
                expected.insert(option.word);
        }
        EXPECT_EQ(offeredByBash(verb.word, "--"), expected) << verb.word;
    }
}

TEST(VerbsTest, OtherShellsKnowTheSame) {
    const std::string zsh =
        part("resources/completions/_tonvalectl", "_tonvalectl_commands", "\n}");
    EXPECT_EQ(found(zsh, "['\"]([a-z]+):"), declaredVerbs());
    const std::string rest = part("resources/completions/_tonvalectl", "\n_tonvalectl() {", "\n}");
    EXPECT_EQ(found(rest, "(--[a-z]+)[}[]"), declaredOptions());

    const std::string fish = contentOf("resources/completions/tonvalectl.fish");
    Names listed;
    for (const std::string& line : found(fish, "set -l commands (.*)\n"))
        listed.merge(split(line));
    EXPECT_EQ(listed, declaredVerbs());
    EXPECT_EQ(found(fish, "-a ([a-z]+) -d"), declaredVerbs());
    Names options;
    for (const std::string& name : found(fish, "complete .* -l ([a-z]+)"))
        options.insert("--" + name);
    EXPECT_EQ(options, declaredOptions());
}

TEST(VerbsTest, ManualsAndHelpTellEachForm) {
    const std::string guide = part("docs/control.md", "## tonvalectl", "\n## ");
    const std::string table = part("docs/control.md", "| Command |", "\n\n");
    const std::string plain = std::regex_replace(table, std::regex("\\\\\\|"), "|");
    Names forms;
    for (const std::string& first : found(plain, "\n\\| (`.*?`) \\|"))
        forms.merge(found(first, "`(.*?)`"));
    EXPECT_EQ(forms, declaredForms());
    EXPECT_EQ(found(guide, "(--[a-z]+)"), declaredOptions());

    // Without the fonts and quotes of its macros.
    const std::string man = part("resources/man/tonvalectl.1", ".SH COMMANDS", ".SH EXIT STATUS");
    std::string heads;
    for (const std::string& head : found(man, "\n\\.B[IR]? (.*)"))
        heads += ", " + std::regex_replace(head, std::regex("\\\\f[IR]| ?\"|\\\\"), "");
    Names expected = declaredForms();
    expected.merge(declaredOptions());
    expected.merge(Names{"-h", "--"});
    EXPECT_EQ(found(heads, ", ?([^,]*[^, ])"), expected);
}
