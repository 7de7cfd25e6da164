// A small tree built from the bytes, read by the library for each locale and checked by the
// tool's check for that locale: the check must find a catalogue good exactly when the library
// reads it. Loose files and packages, English and localised, small budgets and read limits,
// entries of one name, entries of a method that is not read, and catalogues that are refused.

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "example/docparser/doc_example_parser.hpp"
#include "support/temp_tree.hpp"
#include "tree_check.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace {

const char* const kLocales[] = {"", "_ja_JP", "_ko_KR", "_zh_CN"};
const char* const kPackages[] = {"h/a.zip", "h/b_ja_JP.zip", "h/c.zip"};

// The catalogue of file `index`: its one example has the component "f<index>", so that the
// library's result tells which files it read.
std::string catalogueText(std::size_t index, bool refused, std::size_t padding) {
    return R"({"header":{"helpFolder":"h"},"exampleItems":[{"name":"n","component":"f)" +
           std::to_string(index) + R"(",)" + (refused ? "" : R"("title":"t",)") +
           R"("thumbnail":"x","description":")" + std::string(padding, 'd') + R"("}]})";
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    zwhost::settings::resetToDefaults();
    zwhost::settings::setPackageBudget(128 + std::uint64_t{data[0]} % 16 * 64);
    zwhost::settings::setReadLimit(128 + std::uint64_t{data[1]} % 16 * 64);
    static const zwtest::TempDir tree;
    tree.clear();
    const std::filesystem::path root = tree.path() / "docCatalog" / "exampleapi";
    std::filesystem::create_directories(root / "h");

    // Each file takes two bytes: where and what, then how long.
    std::map<std::string, std::string> componentOf; // check's name of a file to its component
    std::vector<std::vector<zwtest::ZipRecord>> packages(std::size(kPackages));
    for (std::size_t at = 2, index = 0; at + 1 < size && index < 16; at += 2, ++index) {
        const unsigned what = data[at];
        const std::string text = catalogueText(index, (what & 0x10U) != 0, data[at + 1] % 64 * 4);
        const unsigned where = what & 3U;
        const std::string stem =
            "ex" + std::to_string((what & 0x20U) != 0 ? 0 : index) + kLocales[(what >> 2) & 3U];
        if (where == 3) {
            tree.write(root / "h" / (stem + ".json"), text);
            componentOf["h/" + stem + ".json"] = "f" + std::to_string(index); // the last one written
        } else {
            packages[where].push_back(
                {stem + ".json", text, static_cast<std::uint16_t>((what & 0x40U) != 0 ? 14 : 0)});
            // Of entries of one name the package reads the first.
            componentOf.try_emplace(std::string(kPackages[where]) + "!" + stem + ".json",
                                    "f" + std::to_string(index));
        }
    }
    for (std::size_t i = 0; i < packages.size(); ++i) {
        if (!packages[i].empty()) {
            tree.write(root / kPackages[i], zwtest::zipOf(packages[i]));
        }
    }

    const std::u16string rootText = zwhost::unicode::utf8ToUtf16(root.string());
    for (const char16_t* locale : {u"ja_JP", u"ko_KR", u"zh_CN"}) {
        zwhost::settings::setCurrentLocale(locale);
        std::set<std::string> library;
        for (const auto& [helpFolder, catalogue] :
             example::docparser::DocExampleParser::getDocExampleFiles(rootText)) {
            for (const auto& [id, items] : catalogue.items) {
                library.insert(zwhost::unicode::utf16ToUtf8(id.substr(0, id.find(u'/'))));
            }
        }
        exampledoc::TreeScope scope;
        scope.root = rootText;
        scope.docLocales = zwhost::settings::supportedDocLocales();
        scope.checked = {locale};
        const exampledoc::CheckReport report = exampledoc::checkTree(scope);
        std::set<std::string> checked;
        for (const exampledoc::CheckedFile& file : report.files) {
            if (file.kind == exampledoc::CheckedFile::Kind::Catalogue && !report.hasErrors(file.file)) {
                checked.insert(componentOf.at(file.file));
            }
        }
        if (checked != library) {
            __builtin_trap();
        }
    }
    return 0;
}
