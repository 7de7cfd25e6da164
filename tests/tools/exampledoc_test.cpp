#include <dlfcn.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "cli.hpp"
#include "foundation/log/diagnostic_logger.hpp"
#include "support/host_leak_check.hpp"
#include "support/tool_run.hpp"

namespace {

using example::docparser::DocExampleParser;

class Exampledoc : public zwtest::HostLeakCheck {};

// Each command's command lines, a line each in tests/data/exampledoc/MANIFEST: help, usage, version
// and unknown commands; what list writes and how it reads locales, colour, filters and what it
// skips; what show writes; each rule of check at its place, every locale and format; coverage;
// what preview cannot write.
class ExampledocCommand : public zwtest::HostLeakCheck, public testing::WithParamInterface<const char*> {};

TEST_P(ExampledocCommand, SaysWhatItsManifestCasesExpect) {
    zwtest::expectManifestCases(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Exampledoc, ExampledocCommand,
                         testing::Values("usage", "list", "show", "check", "coverage", "preview"),
                         [](const auto& info) { return std::string(info.param); });

TEST_F(Exampledoc, ManualPageNamesEveryCommandAndEachOfItsOptions) {
    using Names = std::set<std::string>;
    std::map<std::string, Names> expected;
    Names commands = {"help", "completion"};
    for (const auto& command : exampledoc::commandSpellings()) {
        expected[command.name] = Names(command.options.begin(), command.options.end());
        commands.insert(command.name);
    }
    Names common = expected.begin()->second;
    for (const auto& command : expected) {
        std::erase_if(common, [&](const std::string& option) { return !command.second.contains(option); });
    }

    // The manual page defines each command, and each option in the section of its command or in
    // "Every command" for the options that all commands share, in a .TP paragraph.
    const std::string manual = zwtest::fileText(ZW_SOURCE_DIR "/tools/exampledoc/exampledoc.1");
    const std::regex paragraph(R"re(\.S[HS] "?(exampledoc )?([^"\n]*)"?\n|\.TP\n([^\n]*))re");
    const std::regex commandName(R"re(^\.B[IR]? "?(\w+))re");
    const std::regex option(R"re(\\-\\-([a-z][a-z-]*))re");
    std::map<std::string, Names> documented;
    std::string section;
    for (std::sregex_iterator it(manual.begin(), manual.end(), paragraph), end; it != end; ++it) {
        const std::string definition = (*it)[3];
        std::smatch match;
        if ((*it)[2].matched) {
            section = (*it)[2];
        } else if (section == "COMMANDS" && std::regex_search(definition, match, commandName)) {
            documented[section].insert(match[1]);
        } else if (section != "COMMANDS") {
            for (std::sregex_iterator o(definition.begin(), definition.end(), option); o != end; ++o) {
                documented[section].insert("--" + (*o)[1].str());
            }
        }
    }
    EXPECT_EQ(documented["COMMANDS"], commands);
    EXPECT_EQ(documented["Every command"], common);
    EXPECT_EQ(documented["\\-\\-version"], Names{"--version"});
    for (const auto& [name, options] : expected) {
        Names specific;
        std::set_difference(options.begin(), options.end(), common.begin(), common.end(),
                            std::inserter(specific, specific.end()));
        EXPECT_EQ(documented[name], specific) << name;
    }
}

TEST_F(Exampledoc, TheToolsProcessHoldsOneCopyOfTheLibrary) {
    const auto named = [](const std::string& name) {
        return std::ranges::count(zwhost::log::registeredLoggers(), name);
    };
    EXPECT_EQ(named("exampleApi::docparser"), 1);
    {
        const foundation::log::basic_diagnostic_logger<char> passing("test::passing");
        EXPECT_EQ(named("test::passing"), 1);
    }
    EXPECT_EQ(named("test::passing"), 0);
    // Any shared object of the process reaches the library by its exported name; that road must
    // lead to the copy the tool uses, or to none.
    using GetRoot = std::shared_ptr<const std::u16string> (*)();
    DocExampleParser::setExampleRoot(u"/one/road");
    if (auto* other = reinterpret_cast<GetRoot>(
            dlsym(RTLD_DEFAULT, "_ZN7example9docparser16DocExampleParser14getExampleRootB5cxx11Ev"))) {
        EXPECT_EQ(*other(), *DocExampleParser::getExampleRoot());
    }
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), u"/one/road/docCatalog/exampleapi");
    DocExampleParser::restoreDefaultSettings();
}

} // namespace
