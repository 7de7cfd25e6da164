#pragma once
// Entries of an open package, listed and read through a manager.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "opc/file_system_ops_selector.hpp"
#include "opc/model/package.hpp"

namespace opc::zwservices {

/** One leaf of a package: a cheaply copied handle that shares the entry's description. */
class FileSystemEntry {
public:
    struct Info {
        std::uint64_t index{}; // position in the central directory
        std::u16string path;   // full name inside the package
        std::uint64_t size{};  // declared uncompressed size
        std::uint32_t crc{};   // declared CRC-32
    };

    FileSystemEntry() = default;
    explicit FileSystemEntry(std::shared_ptr<const Info> info) : info_(std::move(info)) {}

    /** The entry's name without the folders above it. */
    std::u16string getBaseName() const;
    /** The entry's full name inside the package. */
    const std::u16string& getPath() const { return info_->path; }
    const Info& info() const { return *info_; }

private:
    std::shared_ptr<const Info> info_;
};

class FileSystemManager {
public:
    /** A manager of the entries of `package`, which must outlive it and be opened before use. */
    FileSystemManager(model::Package& package, const FileSystemOpsSelector& selector);
    FileSystemManager(const FileSystemManager&) = delete;
    FileSystemManager& operator=(const FileSystemManager&) = delete;

    /** Every file entry (not folders) of the open package, in central-directory order; of entries
        that share a name, the first.
        @throw PackageError Thrown when the package is not open or a name is not UTF-8. */
    std::vector<FileSystemEntry> getAllLeafs() const;

    /** An entry of the open package that getAllLeafs leaves out, and why. */
    struct SkippedEntry {
        enum class Why { DuplicateName };
        std::u16string path;
        Why why;
        std::string reason; // a sentence for people, such as "a second entry of this name"
    };

    /** The entries of the open package that getAllLeafs leaves out, in central-directory order:
        the later entries of a name that an earlier entry already has.
        @throw PackageError Thrown when the package is not open or a name is not UTF-8. */
    std::vector<SkippedEntry> getSkippedEntries() const;

    /** No budget: a package may inflate as many bytes as its entries hold. */
    static constexpr std::uint64_t kNoBudget = UINT64_MAX;

    /** The whole content of `entry`, at most `limit` bytes, CRC and size checked, read from the
        package's file at that entry's bytes alone. The text grows as it is inflated; nothing is
        allocated from the size the entry declares. All the reads of
        this manager together inflate at most `budget` bytes, and an entry that inflates more than
        kMaxRatio times its compressed size beyond kRatioFloor bytes is refused.
        @throw PackageError Thrown when the content exceeds `limit` or the budget, differs from its
        declared size or CRC, cannot be read (the file ends before it: it shrank since `open`), or
        is compressed with a method that is not supported ("compression method N (name) is not
        supported"). */
    std::string readEntry(const FileSystemEntry& entry, std::uint64_t limit,
                          std::uint64_t budget = kNoBudget) const;

    /** The bytes inflated by this manager's reads so far, whole entries or not. */
    std::uint64_t inflatedBytes() const { return inflated_; }

    /** The most an entry may inflate per byte of compressed data once past kRatioFloor bytes. */
    static constexpr std::uint64_t kMaxRatio = 1024;
    static constexpr std::uint64_t kRatioFloor = std::uint64_t{1} << 20;

    /** The selector this manager was built with. */
    const FileSystemOpsSelector& selector() const { return selector_; }

private:
    model::Package& package_;
    const FileSystemOpsSelector& selector_;
    mutable std::uint64_t inflated_ = 0;
};

} // namespace opc::zwservices
