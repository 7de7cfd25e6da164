#include "package_file.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "opc/package_error.hpp"
#include "zwhost/system_calls.hpp"

namespace opc::zippackage::detail {

PackageFile::PackageFile(std::string path) : path_(std::move(path)), file_(path_.c_str()) {
    if (file_.failure() != nullptr) {
        throw PackageError(PackageErrorKind::Unreadable, std::string(file_.failure()) + " package " + path_ +
                                                             ": " + std::strerror(file_.error()));
    }
    size_ = file_.size();
    // A file that shrinks meanwhile keeps the bytes it still had.
    window_.resize(static_cast<std::size_t>(std::min(size_, kEndWindow)));
    window_.resize(readAt(size_ - window_.size(), window_.data(), window_.size()));
    size_ = size_ - (std::min(size_, kEndWindow) - window_.size());
}

std::string_view PackageFile::read(std::uint64_t offset, std::uint64_t count,
                                   std::vector<char>& buffer) const {
    // An offset before the window wraps past its end.
    if (offset - windowOffset() <= window_.size()) {
        return std::string_view(window_).substr(offset - windowOffset(), count);
    }
    // Never more than the file held at open, whatever a record claims.
    buffer.resize(static_cast<std::size_t>(std::min(count, size_ - std::min(offset, size_))));
    buffer.resize(readAt(offset, buffer.data(), buffer.size()));
    return {buffer.data(), buffer.size()};
}

std::size_t PackageFile::readAt(std::uint64_t offset, char* into, std::size_t count) const {
    std::size_t got = 0;
    while (got < count) {
        const ssize_t piece =
            zwhost::sys::pread(file_.get(), into + got, count - got, static_cast<off_t>(offset + got));
        if (piece < 0) {
            throw PackageError(PackageErrorKind::Unreadable,
                               "cannot read package " + path_ + ": " + std::strerror(errno));
        }
        if (piece == 0) {
            break;
        }
        got += static_cast<std::size_t>(piece);
    }
    return got;
}

} // namespace opc::zippackage::detail
