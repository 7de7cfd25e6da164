#include <algorithm>
#include <functional>
#include <string>

#include <boost/json/stream_parser.hpp>

#include "catalogue/catalogue_parser.hpp"
#include "commands.hpp"
#include "reference/docparser/read_zip_files.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using reference::docparser::DocResourceParser;
using ParsingTools = DocResourceParser::ParsingTools;
using zwhost::unicode::utf16ToUtf8;

// Where a JSON text first goes wrong, as "line L, column C: message"; empty if it is valid JSON.
std::string jsonSyntaxError(const std::string& text) {
    boost::json::stream_parser parser;
    boost::system::error_code error;
    const std::size_t consumed = parser.write(text.data(), text.size(), error);
    if (!error) {
        parser.finish(error);
    }
    if (!error) {
        return {};
    }
    const std::size_t offset = std::min(consumed, text.size());
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n');
    const std::size_t lineStart = text.rfind('\n', offset == 0 ? 0 : offset - 1);
    const std::size_t column =
        lineStart == std::string::npos || offset == 0 ? offset + 1 : offset - lineStart;
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + error.message();
}

class Checker {
public:
    Checker(std::ostream& out, std::u16string root) : out_(out), root_(std::move(root)) {}

    // Reads and parses one catalogue; reports it as good or as skipped with the reason.
    void catalogue(const std::string& label, const std::function<std::string()>& read) {
        std::string text;
        try {
            text = read();
        } catch (const std::exception& error) {
            skip(label, std::string("cannot be read: ") + error.what());
            return;
        }
        if (const std::string syntax = jsonSyntaxError(text); !syntax.empty()) {
            skip(label, "invalid JSON at " + syntax);
            return;
        }
        try {
            const auto result = example::docparser::detail::parseExampleCatalogue(text);
            std::size_t count = 0;
            for (const auto& [id, items] : result.begin()->second.items) {
                count += items.size();
            }
            out_ << "ok    " << label << ": help folder \"" << utf16ToUtf8(result.begin()->first) << "\", "
                 << count << (count == 1 ? " example\n" : " examples\n");
            ++good_;
        } catch (const std::exception& error) {
            skip(label, std::string("not a catalogue: ") + error.what());
        }
    }

    void skip(const std::string& label, const std::string& reason) {
        out_ << "SKIP  " << label << ": " << reason << '\n';
        ++skipped_;
    }

    std::string relative(const std::u16string& path) const {
        const std::u16string_view view(path);
        if (view.starts_with(root_) && view.size() > root_.size()) {
            return utf16ToUtf8(view.substr(root_.size() + 1));
        }
        return utf16ToUtf8(path);
    }

    int summary() const {
        out_ << '\n'
             << good_ << " catalogue" << (good_ == 1 ? "" : "s") << " read, " << skipped_ << " file"
             << (skipped_ == 1 ? "" : "s") << " or package" << (skipped_ == 1 ? "" : "s") << " skipped\n";
        return skipped_ == 0 ? 0 : 1;
    }

private:
    std::ostream& out_;
    std::u16string root_;
    std::size_t good_ = 0;
    std::size_t skipped_ = 0;
};

} // namespace

int checkCommand(const Options& options, std::ostream& out, std::ostream& /*err*/) {
    const std::u16string root = applyOptions(options);
    const std::vector<std::u16string> docLocales = ParsingTools::getSupportedDocLocales();
    const std::u16string localeSuffix = ParsingTools::kLocaleSeparator + ParsingTools::getCurrentLocale();
    const auto products = DocResourceParser::getAllProducts(root, docLocales, localeSuffix);
    const auto storage = storage::microservicestoragesystem::GetStorageSystemReference();
    const opc::FileSystemOpsSelector selector(storage);

    Checker checker(out, root);
    // Packages first, then loose files: the order in which the library reads them.
    for (const auto& product : products.packageProducts) {
        const std::string label = checker.relative(product.getFullPath());
        try {
            opc::zippackage::ZipPhysicalPackage physical(product.getFullPath(), selector, true);
            opc::model::Package package(physical);
            opc::zwservices::FileSystemManager manager(package, selector);
            package.open(opc::interfaces::OpenMode::ReadOnly);
            const auto leaves = manager.getAllLeafs();
            const auto records = reference::docparser::detail::selectCatalogueLeaves(
                leaves, product, docLocales, localeSuffix, manager);
            if (records.empty()) {
                out << "note  " << label << ": no catalogue for this locale inside\n";
            }
            for (const auto& record : records) {
                checker.catalogue(label + "!" + utf16ToUtf8(record.getEntry().getPath()),
                                  [&] { return DocResourceParser::openAndReadFile(record); });
            }
        } catch (const std::exception& error) {
            checker.skip(label, std::string("package cannot be opened: ") + error.what());
        }
    }
    for (const auto& product : products.looseProducts) {
        checker.catalogue(checker.relative(product.getFullPath()),
                          [&] { return DocResourceParser::openAndReadFile(product); });
    }
    return checker.summary();
}

} // namespace exampledoc
