#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <set>
#include <system_error>

#include "commands.hpp"
#include "preview_html.hpp"
#include "thumbnail_check.hpp"
#include "tree_check.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

namespace fs = std::filesystem;
using zwhost::unicode::utf16ToUtf8;

constexpr const char* kDefaultOut = "exampledoc-preview";
constexpr const char* kThumbnails = "thumbnails";

// A page or thumbnail that cannot be written.
struct WriteError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The ids of each locale's catalogues read into each help folder, as the check's walk reads them.
using LocalisedIds = std::map<std::pair<std::u16string, std::u16string>, std::set<std::u16string>>;

// The findings of the catalogues read under `locale`: by help folder, and those of no help folder.
void placeFindings(const CheckReport& report, const std::string& locale, PreviewPage& page,
                   std::map<std::u16string, std::vector<const Finding*>>& byFolder) {
    std::map<std::string, const CheckedFile*> files;
    for (const CheckedFile& file : report.files) {
        files.emplace(file.file, &file);
    }
    for (const Finding& finding : report.findings) {
        const auto found = files.find(finding.file);
        const CheckedFile* file = found == files.end() ? nullptr : found->second;
        const bool readHere =
            file == nullptr || file->english || file->locales.empty() ||
            std::find(file->locales.begin(), file->locales.end(), locale) != file->locales.end();
        if (!readHere) {
            continue;
        }
        if (file != nullptr && !file->helpFolder.empty()) {
            byFolder[zwhost::unicode::utf8ToUtf16(file->helpFolder)].push_back(&finding);
        } else {
            page.otherFindings.push_back(&finding);
        }
    }
}

// Copies thumbnails into the output folder, each once, gives their URLs and counts the missing.
class ThumbnailCopies {
public:
    ThumbnailCopies(fs::path docRoot, fs::path out) : docRoot_(std::move(docRoot)), out_(std::move(out)) {}

    // The URL of the copy of the thumbnail, or empty when there is none to show.
    std::string urlOf(const std::u16string& helpFolder, const std::u16string& thumbnail) {
        // A tree of catalogues alone has no documentation folders: one look per help folder.
        const auto [folder, unseen] = folders_.emplace(helpFolder, false);
        if (unseen) {
            folder->second = hasDocumentationFolder(docRoot_, helpFolder);
        }
        const Thumbnail found = folder->second ? findThumbnail(docRoot_, helpFolder, thumbnail) : Thumbnail{};
        if (found.state != Thumbnail::State::Found) {
            missing_.emplace(helpFolder, thumbnail);
            return {};
        }
        const std::string relative = std::string(kThumbnails) + '/' + found.relative;
        if (copied_.insert(relative).second) {
            const fs::path to = out_ / relative;
            std::error_code error;
            fs::create_directories(to.parent_path(), error);
            if (!error) {
                fs::copy_file(found.file, to, fs::copy_options::overwrite_existing, error);
            }
            if (error) {
                throw WriteError("cannot copy " + found.file.string() + " to " + to.string() + ": " +
                                 error.message());
            }
        }
        return percentEncodePath(relative);
    }

    // How many thumbnails, by help folder and name, no page could show.
    std::size_t missing() const { return missing_.size(); }

private:
    fs::path docRoot_;
    fs::path out_;
    std::map<std::u16string, bool> folders_;
    std::set<std::string> copied_;
    std::set<std::pair<std::u16string, std::u16string>> missing_;
};

// glibc merges the blocks of freed records only when a large block is next asked for: asking for
// one at once merges them while the check still runs, not once it has ended and the page is written.
void mergeFreedBlocks() {
    // Through a volatile pointer: the compiler drops a block that is freed unused.
    void* volatile block = std::malloc(std::size_t{1} << 16);
    std::free(block);
}

// The sections of one locale's page, a card for each example the library gives for the locale;
// the records go with the call, while the check may still run.
std::vector<PreviewSection> readSections(const TreeScope& scope, const std::u16string& locale,
                                         ThumbnailCopies& thumbnails) {
    zwhost::settings::setCurrentLocale(locale);
    std::vector<PreviewSection> sections;
    {
        const example::docparser::ExampleCatalogues catalogues =
            example::docparser::DocExampleParser::getDocExampleFiles(scope.root);
        sections.reserve(catalogues.size());
        for (const auto& [helpFolder, catalogue] : catalogues) {
            PreviewSection& section = sections.emplace_back(startSection(helpFolder, catalogue.header));
            for (const auto& [id, items] : catalogue.items) {
                for (const auto& item : items) {
                    addCard(section, id, item, thumbnails.urlOf(helpFolder, item.getThumbnail()));
                }
            }
        }
    }
    mergeFreedBlocks();
    return sections;
}

// Marks the cards whose ids the locale's catalogues lack (null `localisedIds`: they lack all).
void markUntranslated(PreviewSection& section, const std::set<std::u16string>* localisedIds) {
    for (PreviewSection::Card& card : section.cards) {
        card.untranslated = localisedIds == nullptr || localisedIds->count(card.id) == 0;
        section.untranslated += card.untranslated ? 1 : 0;
    }
}

void writeFile(const fs::path& file, const std::function<void(std::ostream&)>& write) {
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    if (stream) {
        write(stream);
        stream.close();
    }
    if (!stream) {
        const int error = errno;
        throw WriteError("cannot write " + file.string() +
                         (error != 0 ? std::string(": ") + std::strerror(error) : ""));
    }
}

// Refuses to write over an earlier preview, or anything else, unless told to.
void claimOutput(const fs::path& out, const std::vector<std::string>& locales, bool force) {
    std::error_code error;
    if (fs::exists(out, error) && !fs::is_directory(out, error)) {
        throw UsageError(out.string() + " is not a folder; give --out a folder for the pages");
    }
    if (!force) {
        std::vector<std::string> names = {"index.html", kThumbnails};
        for (const std::string& locale : locales) {
            names.push_back(locale + ".html");
        }
        for (const std::string& name : names) {
            if (fs::exists(out / name, error)) {
                throw UsageError((out / name).string() +
                                 " already exists; give --force to replace it, or --out another folder");
            }
        }
    }
    fs::create_directories(out, error);
    if (error) {
        throw WriteError("cannot make the folder " + out.string() + ": " + error.message());
    }
}

int failed(std::ostream& err, const WriteError& error) {
    err << "exampledoc preview: " << error.what() << '\n';
    return 1;
}

} // namespace

int previewCommand(const Options& options, std::ostream& /*out*/, std::ostream& err) {
    const TreeScope scope = scopeOf(options);
    std::vector<std::u16string> pageLocales = scope.checked;
    if (!options.locale) {
        pageLocales.insert(pageLocales.begin(), u"en_US");
    }
    std::vector<std::string> localeNames;
    localeNames.reserve(pageLocales.size());
    for (const std::u16string& locale : pageLocales) {
        localeNames.push_back(utf16ToUtf8(locale));
    }
    const fs::path out = options.out ? fs::path(*options.out) : fs::path(kDefaultOut);
    try {
        claimOutput(out, localeNames, options.force);
    } catch (const WriteError& error) {
        return failed(err, error);
    }

    // The check and the library's reading of the first page are independent, so the check runs on
    // a thread of its own meanwhile: a preview of one locale costs the longer of the two, not both.
    // The cards are rendered before the check ends; it gives the findings and the untranslated marks.
    LocalisedIds localised;
    std::future<CheckReport> checking = std::async(std::launch::async, [&] {
        return checkTree(scope, [&](const std::u16string& locale, const CatalogueFacts& facts) {
            if (!locale.empty()) {
                localised[{locale, facts.helpFolder}].insert(facts.ids.begin(), facts.ids.end());
            }
        });
    });
    ThumbnailCopies thumbnails(documentationRoot(scope.root), out);
    PreviewIndex index;
    index.root = utf16ToUtf8(scope.root);
    index.locales = localeNames;
    try {
        std::vector<PreviewSection> firstPage = readSections(scope, pageLocales.front(), thumbnails);
        const CheckReport report = checking.get();
        for (std::size_t at = 0; at < pageLocales.size(); ++at) {
            const std::u16string& locale = pageLocales[at];
            const std::string& name = localeNames[at];
            // Under English every example is in its own language; only supported locales translate.
            const bool english =
                std::find(scope.docLocales.begin(), scope.docLocales.end(), locale) == scope.docLocales.end();
            if (english) {
                index.english = name;
            }
            PreviewPage page;
            page.locale = name;
            page.locales = localeNames;
            page.sections = at == 0 ? std::move(firstPage) : readSections(scope, locale, thumbnails);
            std::map<std::u16string, std::vector<const Finding*>> findings;
            placeFindings(report, name, page, findings);
            for (PreviewSection& section : page.sections) {
                if (!english) {
                    const auto ids = localised.find({locale, section.helpFolder});
                    markUntranslated(section, ids == localised.end() ? nullptr : &ids->second);
                }
                section.findings = std::move(findings[section.helpFolder]);
                index.folders[section.helpFolder][name] = countsOf(section);
            }
            writeFile(out / (name + ".html"), [&](std::ostream& stream) { writePreviewPage(stream, page); });
        }
        writeFile(out / "index.html", [&](std::ostream& stream) { writePreviewIndex(stream, index); });
    } catch (const WriteError& error) {
        return failed(err, error);
    }
    err << "exampledoc preview: wrote " << pageLocales.size()
        << (pageLocales.size() == 1 ? " page" : " pages") << " and an index to " << out.string() << "/; open "
        << (out / "index.html").string() << '\n';
    if (const std::size_t missing = thumbnails.missing(); missing != 0) {
        err << "exampledoc preview: " << missing << (missing == 1 ? " thumbnail is" : " thumbnails are")
            << " missing; 'exampledoc check' names them where the help folder's documentation folder "
               "exists\n";
    }
    return 0;
}

} // namespace exampledoc
