#include <string_view>

#include "commands.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "text_output.hpp"
#include "zcos/cos_class.hpp"
#include "zwhost/classes.hpp"
#include "zwhost/unicode.hpp"
#include "zwhost/zcos.hpp"

namespace exampledoc {
namespace {

using zwhost::unicode::utf16ToUtf8;

// The properties of the host's item class, in the order they are shown.
constexpr std::string_view kItemProperties[] = {
    "Name",      "Component",   "Title",       "Description",     "RelativePaths",
    "Thumbnail", "ExampleType", "OpenCommand", "SupportingFiles", "DocIDLinks",
};

// "rows-by-columns" of an array.
std::string shape(const zxArray_tag* value) {
    return std::to_string(value->dims.at(0)) + "-by-" +
           std::to_string(value->dims.size() > 1 ? value->dims[1] : 1);
}

std::string quoted(const zxArray_tag* text) {
    return '"' + escapeControls(utf16ToUtf8(matrix::getCharText(text))) + '"';
}

// Writes one host value as the host holds it: text, a list of texts, or objects with their
// own properties read by name.
void printValue(std::ostream& out, const zxArray_tag* value) {
    const std::uint64_t count = zxGetNumberOfElements(value);
    if (value->classID == zxCHAR_CLASS) {
        out << quoted(value) << '\n';
        return;
    }
    if (value->classID == zxCELL_CLASS) {
        out << shape(value) << " cell" << (count == 0 ? " (empty)\n" : "\n");
        for (const auto& text : matrix::getTextList(value)) {
            out << "      - \"" << escapeControls(utf16ToUtf8(text)) << "\"\n";
        }
        return;
    }
    const std::string& className = value->objectClass->definition().name;
    if (className == zwhost::classes::kExampleTypeClass) {
        const auto name = zwhost::zcos::getProperty(value, 0, "Name");
        const auto number = zwhost::zcos::getProperty(value, 0, "Value");
        out << utf16ToUtf8(matrix::getCharText(name.get())) << " ("
            << *reinterpret_cast<const std::uint32_t*>(number->realData) << ")\n";
        return;
    }
    out << shape(value) << ' ' << className.substr(className.rfind('.') + 1)
        << (count == 0 ? " (empty)\n" : "\n");
    for (std::uint64_t i = 0; i < count; ++i) {
        const auto docID = zwhost::zcos::getProperty(value, i, "DocID");
        const auto target = zwhost::zcos::getProperty(value, i, "Target");
        out << "      - DocID " << quoted(docID.get()) << ", Target " << quoted(target.get()) << '\n';
    }
}

} // namespace

int showCommand(const Options& options, std::ostream& out, std::ostream& err) {
    if (options.operands.size() != 1) {
        throw UsageError("give exactly one example id, such as graphics/SurfacePlotOfPeaks");
    }
    const std::u16string root = applyOptions(options);
    auto catalogues = example::docparser::DocExampleParser::getDocExampleFiles(root);
    const std::u16string id = zwhost::unicode::utf8ToUtf16(options.operands.front());

    bool found = false;
    for (auto& [helpFolder, catalogue] : catalogues) {
        const auto items = catalogue.items.find(id);
        if (items == catalogue.items.end()) {
            continue;
        }
        for (auto& item : items->second) {
            out << (found ? "\n" : "") << "Example " << options.operands.front() << " in help folder \""
                << escapeControls(utf16ToUtf8(helpFolder)) << "\" (locale "
                << escapeControls(utf16ToUtf8(catalogue.header.getLocale()))
                << "), read through the host's class " << zwhost::classes::kExampleItemClass << ":\n";
            // The host holds the item as an object and reads every property by name.
            const matrix::zx_array_handle object = zwhost::classes::wrapExampleItem(item);
            for (std::string_view property : kItemProperties) {
                out << "  " << property << ": ";
                printValue(out, zwhost::zcos::getProperty(object.get(), 0, property).get());
            }
            found = true;
        }
    }
    if (!found) {
        err << "exampledoc show: no example with id " << options.operands.front()
            << " (see 'exampledoc list' for the ids)\n";
        return 1;
    }
    return 0;
}

} // namespace exampledoc
