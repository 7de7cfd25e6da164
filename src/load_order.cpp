// Every object the library builds at load, in the order it builds them: the catalogue keys, the
// logger, the path separator, the root suffix, and last the kind table. They share this one
// translation unit because only within one is the order of construction the order of definition
// (and destruction its reverse) whatever the link order; their declarations live by meaning with
// the code that uses them.

#include "catalogue/catalogue_keys.hpp"
#include "catalogue/example_root_objects.hpp"
#include "model/example_type_table.hpp"

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
