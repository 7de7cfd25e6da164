// A program built against the installed library: it reads the sample documentation tree that
// comes with the library, reads an example's title through the host's classes and catches the
// library's own error, and says what differs from what a user of the package relies on. The
// packaging tests build and run it. Usage: consumer SAMPLE_DOCROOT

#include <filesystem>
#include <iostream>
#include <string>

#include "example/docparser/doc_example_parser.hpp"
#include "foundation/core/except/exception.hpp"
#include "matrix/matrix.hpp"
#include "zwhost/classes.hpp"
#include "zwhost/zcos.hpp"

namespace {

using example::docparser::DocExampleParser;

int failures = 0;

void expect(bool condition, const std::string& what) {
    if (!condition) {
        std::cerr << "consumer: " << what << '\n';
        ++failures;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: consumer SAMPLE_DOCROOT\n";
        return 2;
    }
    const std::filesystem::path sampleRoot = std::filesystem::canonical(argv[1]);

    const std::filesystem::path exampleRoot(*DocExampleParser::getExampleRoot());
    expect(exampleRoot == sampleRoot / "docCatalog" / "exampleapi",
           "default example root is " + exampleRoot.string() + ", not under " + sampleRoot.string());

    auto catalogues = DocExampleParser::getDocExampleFiles(exampleRoot.u16string());
    auto graphics = catalogues.find(u"graphics");
    expect(graphics != catalogues.end() && !graphics->second.items.empty(),
           "the sample tree has no graphics catalogue");
    if (failures != 0) {
        return 1;
    }

    auto& item = graphics->second.items.begin()->second.front();
    zwhost::classes::registerDocParserClasses();
    {
        matrix::zx_array_handle object = zwhost::classes::wrapExampleItem(item);
        matrix::zx_array_handle title = zwhost::zcos::getProperty(object.get(), 0, "Title");
        expect(matrix::getCharText(title.get()) == item.getTitle(), "Title read through the host differs");
    }

    // The library's own error crosses into this program and is caught by its framework base.
    matrix::zx_array_handle notScalar = matrix::from_zentab(matrix::createCharRow(u"ab"));
    try {
        item.setExampleTypeProperty(notScalar.get());
        expect(false, "setting the kind to two characters did not throw");
    } catch (const foundation::core::except::IMsgIDException& error) {
        expect(error.GetID() == "ZENTAB:class:RequireScalar", "unexpected error " + error.GetID());
    }

    std::cout << "consumer: " << catalogues.size() << " catalogues\n";
    return failures == 0 ? 0 : 1;
}
