#pragma once
// Where a catalogue's thumbnails are: in the help folder's documentation folder, ROOT/<helpFolder>/,
// beside docCatalog. Used by the preview to show them and by the check to note missing ones.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "check_report.hpp"
#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** The documentation root of an example root: the folder that holds docCatalog/exampleapi. */
std::filesystem::path documentationRoot(const std::u16string& exampleRoot);

/** `path` as names joined by "/", or nothing for a path that could leave its folder or name a
    scheme: empty, absolute, with "." or ".." or an empty name, a backslash, a colon or a control
    character. */
std::optional<std::string> plainRelativePath(const std::u16string& path);

/** Whether the help folder's documentation folder, ROOT/<helpFolder>/, exists. */
bool hasDocumentationFolder(const std::filesystem::path& docRoot, const std::u16string& helpFolder);

/** What a catalogue's thumbnail names. */
struct Thumbnail {
    enum class State { Found, Missing, Refused, None };
    State state = State::None;  // None for an empty thumbnail; Refused for no plain relative path
    std::string relative;       // "<helpFolder>/<thumbnail>" unless Refused or None
    std::filesystem::path file; // the regular file inside the documentation folder, when Found
};

/** Looks for the thumbnail `thumbnail` of `helpFolder` under `docRoot`. A name that leads out of
    the documentation folder, through a link or otherwise, is Missing. */
Thumbnail findThumbnail(const std::filesystem::path& docRoot, const std::u16string& helpFolder,
                        const std::u16string& thumbnail);

/** When the help folder's documentation folder exists, appends a note for each thumbnail of the
    catalogue (as the library read it) that is not there. */
void checkThumbnails(const std::filesystem::path& docRoot, const std::u16string& helpFolder,
                     const reference::docparser::DocResource<example::docparser::ExampleItem>& catalogue,
                     const std::string& file, std::vector<Finding>& findings);

} // namespace exampledoc
