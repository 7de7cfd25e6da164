// Arbitrary bytes through the tool's check: a catalogue file of those bytes, or a package when
// they begin as a zip does. The check ends with 0 or 1 and never throws; for a catalogue file its
// verdict agrees with the library, which reads the file exactly when the check finds it good, and
// every finding in the file but one of reading has a place inside the text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include <boost/json/parse.hpp>
#include <string_view>

#include "commands.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    zwhost::settings::setReadLimit(std::uint64_t{1} << 20);
    zwhost::settings::setCurrentLocale(u"ja_JP");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const bool package = std::string_view(reinterpret_cast<const char*>(data), size).starts_with("PK");
    static const zwtest::TempDir tree;
    tree.clear();
    tree.write(package ? "docCatalog/exampleapi/h/pkg.zip" : "docCatalog/exampleapi/h/ex.json",
               std::string(reinterpret_cast<const char*>(data), size));

    exampledoc::Options options;
    options.root = tree.path().string();
    options.format = "json";
    std::ostringstream out, err;
    const int status = exampledoc::checkCommand(options, out, err);
    if (status != 0 && status != 1) {
        __builtin_trap();
    }
    const boost::json::value report = boost::json::parse(out.str());
    const std::size_t lines = 1 + static_cast<std::size_t>(std::count(data, data + size, '\n'));
    for (const auto& finding : report.at("findings").as_array()) {
        const auto& line = finding.at("line");
        if (!package && finding.at("file") == "h/ex.json" && finding.at("rule") != "unreadable" &&
            (!line.is_int64() || line.as_int64() < 1 || static_cast<std::size_t>(line.as_int64()) > lines ||
             finding.at("column").as_int64() < 1)) {
            __builtin_trap();
        }
    }
    if (!package) {
        const auto result = example::docparser::DocExampleParser::getDocExampleFiles(
            *example::docparser::DocExampleParser::getExampleRoot());
        if (result.empty() != (status == 1)) {
            __builtin_trap();
        }
    }
    return 0;
}
