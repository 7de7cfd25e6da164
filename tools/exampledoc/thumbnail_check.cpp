#include "thumbnail_check.hpp"

#include <algorithm>
#include <system_error>

#include "check_rules.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {

namespace fs = std::filesystem;
using zwhost::unicode::utf16ToUtf8;

fs::path documentationRoot(const std::u16string& exampleRoot) {
    std::string root = utf16ToUtf8(exampleRoot);
    while (root.size() > 1 && root.back() == '/') {
        root.pop_back();
    }
    return fs::path(root).parent_path().parent_path();
}

std::optional<std::string> plainRelativePath(const std::u16string& path) {
    const std::string text = utf16ToUtf8(path);
    std::size_t start = 0;
    while (true) {
        const std::size_t slash = text.find('/', start);
        const std::string_view name = std::string_view(text).substr(
            start, slash == std::string::npos ? std::string::npos : slash - start);
        if (name.empty() || name == "." || name == "..") {
            return std::nullopt;
        }
        if (slash == std::string::npos) {
            break;
        }
        start = slash + 1;
    }
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f || c == '\\' || c == ':') {
            return std::nullopt;
        }
    }
    return text;
}

bool hasDocumentationFolder(const fs::path& docRoot, const std::u16string& helpFolder) {
    const auto folder = plainRelativePath(helpFolder);
    std::error_code error;
    return folder && fs::is_directory(docRoot / *folder, error);
}

Thumbnail findThumbnail(const fs::path& docRoot, const std::u16string& helpFolder,
                        const std::u16string& thumbnail) {
    Thumbnail found;
    if (thumbnail.empty()) {
        return found;
    }
    const auto folder = plainRelativePath(helpFolder);
    const auto name = plainRelativePath(thumbnail);
    if (!folder || !name) {
        found.state = Thumbnail::State::Refused;
        return found;
    }
    found.relative = *folder + '/' + *name;
    found.state = Thumbnail::State::Missing;
    std::error_code fileError;
    std::error_code folderError;
    const fs::path file = fs::canonical(docRoot / found.relative, fileError);
    const fs::path inside = fs::canonical(docRoot / *folder, folderError);
    if (fileError || folderError || !fs::is_regular_file(file, fileError)) {
        return found;
    }
    const auto [end, unused] = std::mismatch(inside.begin(), inside.end(), file.begin(), file.end());
    if (end == inside.end()) {
        found.state = Thumbnail::State::Found;
        found.file = file;
    }
    return found;
}

void checkThumbnails(const fs::path& docRoot, const std::u16string& helpFolder,
                     const reference::docparser::DocResource<example::docparser::ExampleItem>& catalogue,
                     const std::string& file, std::vector<Finding>& findings) {
    if (!hasDocumentationFolder(docRoot, helpFolder)) {
        return;
    }
    for (const auto& [id, items] : catalogue.items) {
        for (const auto& item : items) {
            const Thumbnail thumbnail = findThumbnail(docRoot, helpFolder, item.getThumbnail());
            if (thumbnail.state != Thumbnail::State::Missing &&
                thumbnail.state != Thumbnail::State::Refused) {
                continue;
            }
            Finding finding;
            finding.severity = checkRule("missing-thumbnail").severity;
            finding.file = file;
            finding.exampleId = utf16ToUtf8(id);
            finding.rule = "missing-thumbnail";
            const std::string named = "thumbnail \"" + utf16ToUtf8(item.getThumbnail()) + "\"";
            finding.message = thumbnail.state == Thumbnail::State::Refused
                                  ? named + " is not a relative path inside " + utf16ToUtf8(helpFolder) +
                                        "/; it is never shown"
                                  : named + " is not there: no file " + thumbnail.relative;
            findings.push_back(std::move(finding));
        }
    }
}

} // namespace exampledoc
