// The reference service's walk over a documentation tree: which loose catalogue files and which
// packages lie under a root, in the order they are to be read.

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "native_name.hpp"
#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/product_walk.hpp"
#include "zwhost/system_calls.hpp"

namespace reference::docparser {
namespace {

namespace fs = std::filesystem;
using zwhost::reference::LeftOut;
using zwhost::reference::detail::fromNative;
using LeftOutFn = std::function<void(const LeftOut&)>;

// Folders nested deeper than this below the root are not read.
constexpr int kMaxDepth = 16;

bool endsWith(std::u16string_view text, std::u16string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// Something before the extension is required: ".json" alone names no catalogue.
bool hasExtension(std::u16string_view name, std::u16string_view extension) {
    return name.size() > extension.size() && endsWith(name, extension);
}

bool isCatalogueName(std::u16string_view name) {
    return hasExtension(name, u".json");
}

bool isPackageName(std::u16string_view name) {
    return hasExtension(name, u".zip");
}

/** What the walk needs to know of an entry, from readdir's type and at most one stat. */
enum class Kind { Folder, File, DanglingLink, LinkLoop, Other };

using Listing = std::vector<std::pair<std::string, unsigned char>>;

[[noreturn]] void cannotList(const std::string& folder) {
    throw fs::filesystem_error("cannot list the folder", folder,
                               std::error_code(errno, std::generic_category()));
}

/** An open folder, closed when it goes out of scope. Its entries are opened and looked at
    relative to it, so that the kernel resolves one name for each and not the whole path. */
class OpenFolder {
public:
    /** Opens `name` in the folder `parent` (AT_FDCWD for a path); `folder` names it in errors. */
    OpenFolder(int parent, const char* name, const std::string& folder)
        : fd_(zwhost::sys::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC)) {
        if (fd_ == -1) {
            cannotList(folder);
        }
    }
    ~OpenFolder() { ::close(fd_); }
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;

    int get() const { return fd_; }

private:
    int fd_;
};

// The entries of `folder` by native name in byte order, so that every machine reads alike, with
// their types as the folder gives them. Read with getdents64 into a buffer on the stack: opendir
// would add a stat of the folder and a heap buffer, and libstdc++'s directory_iterator allocates
// inside a noexcept step, so running out of memory there would end the process.
Listing listSorted(const OpenFolder& folder, const std::string& name) {
    Listing entries;
    alignas(dirent64) char buffer[32 << 10];
    for (;;) {
        const ssize_t got = zwhost::sys::getdents64(folder.get(), buffer, sizeof buffer);
        if (got < 0) {
            cannotList(name);
        }
        if (got == 0) {
            break;
        }
        for (ssize_t at = 0; at < got;) {
            const auto* found = reinterpret_cast<const dirent64*>(buffer + at);
            const std::string_view entry(found->d_name);
            if (entry != "." && entry != "..") {
                entries.emplace_back(std::string(entry), found->d_type);
            }
            at += found->d_reclen;
        }
    }
    std::ranges::sort(entries, std::ranges::less(), &Listing::value_type::first);
    return entries;
}

// `name` in `folder`, in native bytes or in UTF-16.
template <class String>
String joined(const String& folder, const String& name) {
    return folder + typename String::value_type('/') + name;
}

Kind kindOfMode(mode_t mode) {
    if (S_ISDIR(mode)) {
        return Kind::Folder;
    }
    return S_ISREG(mode) ? Kind::File : Kind::Other;
}

// A link to a folder is not followed; a link to a file is read as the file. An entry that cannot
// be looked at counts as neither folder nor file.
Kind kindOf(const OpenFolder& folder, const std::string& name, unsigned char type) {
    struct stat info {};
    switch (type) {
    case DT_DIR:
        return Kind::Folder;
    case DT_REG:
        return Kind::File;
    case DT_LNK:
        break;
    case DT_UNKNOWN:
        if (zwhost::sys::fstatat(folder.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
            return Kind::Other;
        }
        if (!S_ISLNK(info.st_mode)) {
            return kindOfMode(info.st_mode);
        }
        break;
    default:
        return Kind::Other;
    }
    if (zwhost::sys::fstatat(folder.get(), name.c_str(), &info, 0) != 0) {
        return errno == ENOENT ? Kind::DanglingLink : errno == ELOOP ? Kind::LinkLoop : Kind::Other;
    }
    return S_ISREG(info.st_mode) ? Kind::File : Kind::Other;
}

class Walk {
public:
    Walk(const std::vector<std::u16string>& locales, const std::u16string& localeSuffix,
         const LeftOutFn& leftOut)
        : locales_(locales), localeSuffix_(localeSuffix), leftOut_(leftOut) {}

    void folder(const OpenFolder& open, const Listing& entries, const std::u16string& path,
                const std::string& relative, int depth) {
        // The relative path names an entry only in a report and below it, so it is made there.
        const auto relativeOf = [&](const std::string& nativeName) {
            return relative.empty() ? nativeName : joined(relative, nativeName);
        };
        for (const auto& [nativeName, type] : entries) {
            const std::optional<std::u16string> name = fromNative(nativeName);
            if (!name) {
                report(relativeOf(nativeName), LeftOut::Why::NotUtf8, {});
                continue;
            }
            const Kind kind = kindOf(open, nativeName, type);
            if (kind == Kind::Folder) {
                if (depth < kMaxDepth) {
                    subfolder(open, nativeName, joined(path, *name), relativeOf(nativeName), depth + 1);
                } else {
                    report(relativeOf(nativeName), LeftOut::Why::TooDeep, {});
                }
            } else if (kind == Kind::File) {
                if (isPackageName(*name)) {
                    add(products_.packageProducts, *name, joined(path, *name));
                } else if (isCatalogueName(*name)) {
                    add(products_.looseProducts, *name, joined(path, *name));
                }
            } else if (kind == Kind::DanglingLink) {
                report(relativeOf(nativeName), LeftOut::Why::DanglingLink, {});
            } else if (kind == Kind::LinkLoop && (isPackageName(*name) || isCatalogueName(*name))) {
                report(relativeOf(nativeName), LeftOut::Why::LinkLoop, {});
            } else if (isPackageName(*name) || isCatalogueName(*name)) {
                report(relativeOf(nativeName), LeftOut::Why::NotRegularFile, {});
            }
        }
    }

    AllProducts take() { return std::move(products_); }

private:
    void report(const std::string& relative, LeftOut::Why why, std::string detail) const {
        if (leftOut_) {
            leftOut_(LeftOut{relative, why, std::move(detail)});
        }
    }

    // The folder stays open while its entries are walked, one open folder for each level.
    void subfolder(const OpenFolder& parent, const std::string& nativeName, const std::u16string& path,
                   const std::string& relative, int depth) {
        std::optional<OpenFolder> open;
        Listing entries;
        try {
            open.emplace(parent.get(), nativeName.c_str(), relative);
            entries = listSorted(*open, relative);
        } catch (const fs::filesystem_error& error) {
            // A folder below the root that cannot be listed is passed over, as a package that
            // cannot be opened is: what lies beside it is still read.
            report(relative, LeftOut::Why::Unlistable, error.code().message());
            return;
        }
        folder(*open, entries, path, relative, depth);
    }

    void add(std::vector<ProductPathData>& list, const std::u16string& name, std::u16string fullPath) {
        std::u16string stem = fl::filesystem::detail::extract_stem(name);
        const bool localised = std::any_of(locales_.begin(), locales_.end(),
                                           [&](const auto& locale) { return endsWith(stem, locale); });
        // A localised catalogue of another locale than the current one is not read at all.
        if (localised && !endsWith(stem, localeSuffix_)) {
            return;
        }
        // Built, then moved in: emplace_back here trips GCC 12's false maybe-uninitialized warning.
        list.push_back(ProductPathData(std::move(stem), localised, std::move(fullPath)));
    }

    const std::vector<std::u16string>& locales_;
    const std::u16string& localeSuffix_;
    const LeftOutFn& leftOut_;
    AllProducts products_;
};

} // namespace

AllProducts DocResourceParser::getAllProducts(const std::u16string& root,
                                              const std::vector<std::u16string>& locales,
                                              const std::u16string& localeSuffix) {
    zwhost::fault::point("DocResourceParser::getAllProducts");
    return zwhost::reference::walkProducts(root, locales, localeSuffix, {});
}

bool DocResourceParser::isValidFilename(const fl::filesystem::upath& path) {
    zwhost::fault::point("DocResourceParser::isValidFilename");
    const std::u16string_view text = path.text();
    const std::size_t slash = text.find_last_of(fl::filesystem::upath_constant::PATHNAME_SEPARATOR[0]);
    return isCatalogueName(slash == std::u16string_view::npos ? text : text.substr(slash + 1));
}

} // namespace reference::docparser

namespace zwhost::reference {

::reference::docparser::AllProducts walkProducts(const std::u16string& root,
                                                 const std::vector<std::u16string>& locales,
                                                 const std::u16string& localeSuffix,
                                                 const std::function<void(const LeftOut&)>& leftOut) {
    using namespace ::reference::docparser;
    const fs::path native(detail::toNative(root));
    std::error_code error;
    if (fs::status(native, error).type() == fs::file_type::not_found) {
        return {};
    }
    if (error) {
        throw fs::filesystem_error("cannot reach the documentation root", native, error);
    }
    std::u16string path = root;
    if (!path.empty() && path.back() == u'/') {
        path.pop_back();
    }
    Walk walk(locales, localeSuffix, leftOut);
    const OpenFolder open(AT_FDCWD, native.c_str(), native.native());
    walk.folder(open, listSorted(open, native.native()), path, {}, 0);
    return walk.take();
}

} // namespace zwhost::reference
