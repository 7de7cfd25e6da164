#include "zip_floor.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace zwbench {
namespace fs = std::filesystem;
namespace {

constexpr std::uint64_t kEndWindow = 22 + 0xFFFF;

void put(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    }
}

std::uint64_t get(std::string_view bytes, std::size_t at, int width) {
    std::uint64_t value = 0;
    for (int i = width; i-- > 0;) {
        value = (value << 8) | static_cast<unsigned char>(bytes.at(at + static_cast<std::size_t>(i)));
    }
    return value;
}

std::string deflated(const std::string& text) {
    z_stream stream{};
    if (deflateInit2(&stream, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("cannot start deflate");
    }
    std::string out(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) {
        throw std::runtime_error("cannot deflate");
    }
    return out;
}

std::uint32_t crcOfZeros(std::uint64_t count) {
    const std::string zeros(std::size_t{1} << 20, '\0');
    uLong crc = crc32(0, nullptr, 0);
    for (std::uint64_t left = count; left > 0;) {
        const std::size_t piece = static_cast<std::size_t>(std::min<std::uint64_t>(left, zeros.size()));
        crc = crc32_z(crc, reinterpret_cast<const Bytef*>(zeros.data()), piece);
        left -= piece;
    }
    return static_cast<std::uint32_t>(crc);
}

/** Reads `count` bytes at `offset` of `fd` with one pread. */
std::string readAt(int fd, std::uint64_t offset, std::uint64_t count) {
    std::string bytes(count, '\0');
    if (::pread(fd, bytes.data(), count, static_cast<off_t>(offset)) != static_cast<ssize_t>(count)) {
        throw std::runtime_error("short read");
    }
    return bytes;
}

} // namespace

void writeZip(const fs::path& file, const std::vector<ZipMember>& members) {
    fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    std::string directory;
    std::uint64_t offset = 0;
    for (const ZipMember& member : members) {
        const bool stored = member.storedZeros > 0;
        const std::string data = stored ? std::string() : deflated(member.text);
        const std::uint64_t size = stored ? member.storedZeros : member.text.size();
        const std::uint64_t compressed = stored ? size : data.size();
        const std::uint32_t crc =
            stored ? crcOfZeros(size)
                   : static_cast<std::uint32_t>(crc32_z(crc32(0, nullptr, 0),
                                                        reinterpret_cast<const Bytef*>(member.text.data()),
                                                        member.text.size()));
        const int method = stored ? 0 : 8;
        std::string local;
        put(local, 0x04034b50, 4);
        put(local, 20, 2);
        put(local, 0x800, 2);
        put(local, static_cast<std::uint64_t>(method), 2);
        put(local, 0, 2);    // 00:00:00
        put(local, 0x21, 2); // 1 January 1980
        put(local, crc, 4);
        put(local, compressed, 4);
        put(local, size, 4);
        put(local, member.name.size(), 2);
        put(local, 0, 2);
        local += member.name;
        std::string central;
        put(central, 0x02014b50, 4);
        put(central, 20, 2);
        central += local.substr(4, 26);
        put(central, 0, 2);
        put(central, 0, 2);
        put(central, 0, 2);
        put(central, 0, 4);
        put(central, offset, 4);
        central += member.name;
        directory += central;
        out.write(local.data(), static_cast<std::streamsize>(local.size()));
        if (stored) {
            out.seekp(static_cast<std::streamoff>(size), std::ios::cur);
        } else {
            out.write(data.data(), static_cast<std::streamsize>(data.size()));
        }
        offset += local.size() + compressed;
    }
    std::string end;
    put(end, 0x06054b50, 4);
    put(end, 0, 4);
    put(end, members.size(), 2);
    put(end, members.size(), 2);
    put(end, directory.size(), 4);
    put(end, offset, 4);
    put(end, 0, 2);
    out.write(directory.data(), static_cast<std::streamsize>(directory.size()));
    out.write(end.data(), static_cast<std::streamsize>(end.size()));
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

void readZipFloor(const fs::path& file, const std::function<bool(std::string_view)>& wanted,
                  const std::function<void(std::string_view, std::string&&)>& use) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info {};
    if (fd < 0 || ::fstat(fd, &info) != 0) {
        throw std::runtime_error("cannot open " + file.string());
    }
    const auto size = static_cast<std::uint64_t>(info.st_size);
    const std::uint64_t windowStart = size - std::min(size, kEndWindow);
    const std::string window = readAt(fd, windowStart, size - windowStart);
    const std::size_t end = window.rfind("PK\x05\x06");
    if (end == std::string::npos) {
        throw std::runtime_error("no end record in " + file.string());
    }
    const std::uint64_t directorySize = get(window, end + 12, 4);
    const std::uint64_t directoryOffset = get(window, end + 16, 4);
    const std::string far = directoryOffset < windowStart ? readAt(fd, directoryOffset, directorySize) : "";
    const std::string_view directory = directoryOffset < windowStart
                                           ? std::string_view(far)
                                           : std::string_view(window).substr(directoryOffset - windowStart);
    for (std::size_t at = 0; at + 46 <= directorySize;) {
        const std::size_t nameSize = get(directory, at + 28, 2);
        const std::string_view name = directory.substr(at + 46, nameSize);
        if (wanted(name)) {
            const std::uint64_t method = get(directory, at + 10, 2);
            const auto crc = static_cast<uLong>(get(directory, at + 16, 4));
            const std::uint64_t compressed = get(directory, at + 20, 4);
            const std::uint64_t textSize = get(directory, at + 24, 4);
            const std::uint64_t local = get(directory, at + 42, 4);
            const std::uint64_t span = 30 + nameSize + compressed;
            const std::string read = local < windowStart ? readAt(fd, local, span) : "";
            const std::string_view member = local < windowStart
                                                ? std::string_view(read)
                                                : std::string_view(window).substr(local - windowStart, span);
            const std::string_view data = member.substr(30 + nameSize + get(member, 28, 2), compressed);
            std::string text(textSize, '\0');
            if (method == 0) {
                text.assign(data);
            } else {
                z_stream stream{};
                inflateInit2(&stream, -MAX_WBITS);
                stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
                stream.avail_in = static_cast<uInt>(data.size());
                stream.next_out = reinterpret_cast<Bytef*>(text.data());
                stream.avail_out = static_cast<uInt>(text.size());
                const int result = inflate(&stream, Z_FINISH);
                inflateEnd(&stream);
                if (result != Z_STREAM_END || stream.total_out != textSize) {
                    throw std::runtime_error("cannot inflate a member of " + file.string());
                }
            }
            if (crc32_z(crc32(0, nullptr, 0), reinterpret_cast<const Bytef*>(text.data()), text.size()) !=
                crc) {
                throw std::runtime_error("CRC error in " + file.string());
            }
            use(name, std::move(text));
        }
        at += 46 + nameSize + get(directory, at + 30, 2) + get(directory, at + 32, 2);
    }
    ::close(fd);
}

std::string readWholeFile(const fs::path& file) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info {};
    if (fd < 0 || ::fstat(fd, &info) != 0) {
        throw std::runtime_error("cannot open " + file.string());
    }
    std::string bytes = readAt(fd, 0, static_cast<std::uint64_t>(info.st_size));
    ::close(fd);
    return bytes;
}

} // namespace zwbench
