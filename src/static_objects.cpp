// Objects defined in one translation unit are built in the order of their definitions and
// destroyed in reverse, so the load order below holds whatever the link order is.

#include "static_objects.hpp"

#include <iterator>
#include <utility>

#include "fl/filesystem/path.hpp"

namespace example::docparser::detail {

const std::string kKeyExampleItems = "exampleItems";
const std::string kKeyName = "name";
const std::string kKeyComponent = "component";
const std::string kKeyTitle = "title";
const std::string kKeyDescription = "description";
const std::string kKeyRelativePath = "relative_path";
const std::string kKeyThumbnail = "thumbnail";
const std::string kKeyExampleType = "exampleType";
const std::string kKeyOpenCmd = "openCmd";
const std::string kKeySupportingFiles = "supporting_files";
const std::string kKeyDocidLinks = "docid_links";
const std::string kKeyDocid = "docid";
const std::string kKeyTarget = "target";

foundation::log::basic_diagnostic_logger<char> exampleLogger{std::string("exampleApi::docparser")};

const std::u16string pathSeparator = fl::filesystem::upath_constant::PATHNAME_SEPARATOR;

const std::u16string kExampleRootSuffix = pathSeparator + u"docCatalog" + pathSeparator + u"exampleapi";

namespace {

ExampleTypeTable makeExampleTypeTable() {
    // Handed over in numeric order; the map sorts them by key on insertion.
    static constexpr std::pair<std::string_view, ExampleType::Value> kRows[] = {
        {"Live Script", ExampleType::Live_Script},
        {"Script", ExampleType::Script},
        {"Model", ExampleType::Model},
        {"Example", ExampleType::Example},
        {"Chart", ExampleType::Chart},
        {"App", ExampleType::App},
        {"Unknown", ExampleType::Unknown},
    };
    ExampleTypeTable table;
    table.insert(std::begin(kRows), std::end(kRows));
    return table;
}

} // namespace

const ExampleTypeTable exampleTypeByName = makeExampleTypeTable();

} // namespace example::docparser::detail
