#include "entry_decoders.hpp"

#include <bzlib.h>
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>
#include <zstd_errors.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace opc::zwservices::detail {
namespace {

constexpr std::size_t kChunk = std::size_t{64} << 10;
// Version (2 bytes) and size of the properties (2 bytes) come before them in an LZMA entry.
constexpr std::size_t kLzmaHeader = 4;
constexpr std::size_t kLzmaPropertiesSize = 5;

[[noreturn]] void damaged(const std::string& method, const std::string& why) {
    throw std::runtime_error(method + " data is damaged: " + why);
}

struct LzmaEnd {
    void operator()(lzma_stream* stream) const { lzma_end(stream); }
};

/** Runs an initialised liblzma decoder over `data` into `sink` until the end of its stream. */
void runLzma(lzma_stream& stream, std::string_view data, const std::string& method, const Sink& sink) {
    const std::unique_ptr<lzma_stream, LzmaEnd> ending(&stream);
    stream.next_in = reinterpret_cast<const std::uint8_t*>(data.data());
    stream.avail_in = data.size();
    std::uint8_t out[kChunk];
    for (;;) {
        stream.next_out = out;
        stream.avail_out = sizeof out;
        const lzma_ret result = lzma_code(&stream, LZMA_FINISH);
        sink(reinterpret_cast<const char*>(out), sizeof out - stream.avail_out);
        if (result == LZMA_STREAM_END) {
            return;
        }
        if (result == LZMA_MEMLIMIT_ERROR || result == LZMA_MEM_ERROR) {
            throw std::runtime_error(method + " data needs more memory than allowed to decode");
        }
        if (result != LZMA_OK) {
            damaged(method, "liblzma error " + std::to_string(result));
        }
    }
}

void decodeLzma(std::string_view data, std::uint64_t declaredSize, std::uint64_t memory, const Sink& sink) {
    if (data.size() < kLzmaHeader + kLzmaPropertiesSize || data[2] != kLzmaPropertiesSize || data[3] != 0) {
        damaged("LZMA", "no properties header");
    }
    lzma_filter filters[2] = {{LZMA_FILTER_LZMA1, nullptr}, {LZMA_VLI_UNKNOWN, nullptr}};
    if (lzma_properties_decode(&filters[0], nullptr,
                               reinterpret_cast<const std::uint8_t*>(data.data()) + kLzmaHeader,
                               kLzmaPropertiesSize) != LZMA_OK) {
        damaged("LZMA", "bad properties");
    }
    const std::unique_ptr<lzma_options_lzma, decltype(&std::free)> options(
        static_cast<lzma_options_lzma*>(filters[0].options), &std::free);
    // A dictionary larger than the output it may produce is never used beyond that output, so a
    // header that asks for gigabytes costs no more than the read allows.
    options->dict_size = static_cast<std::uint32_t>(
        std::max<std::uint64_t>(LZMA_DICT_SIZE_MIN, std::min<std::uint64_t>(memory, options->dict_size)));
    filters[0].id = LZMA_FILTER_LZMA1EXT;
    options->ext_flags = LZMA_LZMA1EXT_ALLOW_EOPM;
    options->ext_size_low = static_cast<std::uint32_t>(declaredSize);
    options->ext_size_high = static_cast<std::uint32_t>(declaredSize >> 32);
    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_raw_decoder(&stream, filters) != LZMA_OK) {
        damaged("LZMA", "the decoder refuses its properties");
    }
    runLzma(stream, data.substr(kLzmaHeader + kLzmaPropertiesSize), "LZMA", sink);
}

void decodeXz(std::string_view data, std::uint64_t, std::uint64_t memory, const Sink& sink) {
    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_stream_decoder(&stream, memory, 0) != LZMA_OK) {
        throw std::runtime_error("cannot start the XZ decoder");
    }
    runLzma(stream, data, "XZ", sink);
}

struct ZstdFree {
    void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
};

void decodeZstd(std::string_view data, std::uint64_t, std::uint64_t memory, const Sink& sink) {
    const std::unique_ptr<ZSTD_DStream, ZstdFree> stream(ZSTD_createDStream());
    if (!stream) {
        throw std::bad_alloc();
    }
    const ZSTD_bounds bounds = ZSTD_dParam_getBounds(ZSTD_d_windowLogMax);
    int windowLog = bounds.lowerBound;
    while (windowLog < bounds.upperBound && (std::uint64_t{1} << (windowLog + 1)) <= memory) {
        ++windowLog;
    }
    if (ZSTD_isError(ZSTD_DCtx_setParameter(stream.get(), ZSTD_d_windowLogMax, windowLog)) != 0U) {
        throw std::runtime_error("cannot bound the zstd decoder's window");
    }
    ZSTD_inBuffer in{data.data(), data.size(), 0};
    char out[kChunk];
    for (;;) {
        ZSTD_outBuffer buffer{out, sizeof out, 0};
        const std::size_t result = ZSTD_decompressStream(stream.get(), &buffer, &in);
        if (ZSTD_getErrorCode(result) == ZSTD_error_frameParameter_windowTooLarge) {
            throw std::runtime_error("zstd data needs more memory than allowed to decode");
        }
        if (ZSTD_isError(result)) {
            damaged("zstd", ZSTD_getErrorName(result));
        }
        sink(out, buffer.pos);
        if (result == 0 && in.pos == in.size) {
            return;
        }
        if (buffer.pos == 0 && in.pos == in.size) {
            damaged("zstd", "the data ends inside a frame");
        }
    }
}

/** Gives a zlib or libbz2 `stream` the next piece of `data` once it has taken the last: their
    counts are 32-bit, so larger data goes in pieces. `fed` is how much was given so far. */
template <class Stream>
void refill(Stream& stream, std::string_view data, std::size_t& fed) {
    if (stream.avail_in == 0 && fed < data.size()) {
        const std::size_t piece = std::min<std::size_t>(data.size() - fed, UINT32_MAX);
        // Neither library writes through its input pointer; their headers just lack the const.
        stream.next_in = reinterpret_cast<decltype(stream.next_in)>(const_cast<char*>(data.data() + fed));
        stream.avail_in = static_cast<decltype(stream.avail_in)>(piece);
        fed += piece;
    }
}

/** Inflates raw deflate data (no zlib or gzip wrapper) into `sink`. */
void decodeDeflate(std::string_view data, std::uint64_t, std::uint64_t, const Sink& sink) {
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<z_stream, int (*)(z_stream*)> ending(&stream, inflateEnd);
    std::size_t fed = 0;
    unsigned char out[kChunk];
    for (;;) {
        refill(stream, data, fed);
        stream.next_out = out;
        stream.avail_out = sizeof out;
        const int result = inflate(&stream, Z_NO_FLUSH);
        sink(reinterpret_cast<const char*>(out), sizeof out - stream.avail_out);
        if (result == Z_STREAM_END) {
            return;
        }
        if (result == Z_MEM_ERROR) {
            throw std::bad_alloc();
        }
        // Input is refilled above and output has room, so no progress means no input is left.
        if (result == Z_BUF_ERROR) {
            damaged("deflate", "the data ends inside the stream");
        }
        if (result != Z_OK) {
            damaged("deflate", stream.msg != nullptr ? stream.msg : "zlib error " + std::to_string(result));
        }
    }
}

void decodeBzip2(std::string_view data, std::uint64_t, std::uint64_t, const Sink& sink) {
    bz_stream stream{};
    if (BZ2_bzDecompressInit(&stream, 0, 0) != BZ_OK) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<bz_stream, int (*)(bz_stream*)> ending(&stream, BZ2_bzDecompressEnd);
    std::size_t fed = 0;
    char out[kChunk];
    for (;;) {
        refill(stream, data, fed);
        stream.next_out = out;
        stream.avail_out = sizeof out;
        const int result = BZ2_bzDecompress(&stream);
        const std::size_t produced = sizeof out - stream.avail_out;
        sink(out, produced);
        if (result == BZ_STREAM_END) {
            return;
        }
        if (result == BZ_MEM_ERROR) {
            throw std::bad_alloc();
        }
        if (result != BZ_OK) {
            damaged("bzip2", "libbz2 error " + std::to_string(result));
        }
        if (produced == 0 && stream.avail_in == 0 && fed == data.size()) {
            damaged("bzip2", "the data ends inside the stream");
        }
    }
}

void decodeStore(std::string_view data, std::uint64_t, std::uint64_t, const Sink& sink) {
    sink(data.data(), data.size());
}

using Decoder = void (*)(std::string_view data, std::uint64_t declaredSize, std::uint64_t memory,
                         const Sink& sink);

/** A compression method: its number, its name, and its decoder where it is read. */
struct Method {
    std::uint16_t id;
    const char* name;
    Decoder decoder;
};

constexpr Method kMethods[] = {
    {0, "store", decodeStore},     {1, "shrink", nullptr},          {6, "implode", nullptr},
    {8, "deflate", decodeDeflate}, {9, "Deflate64", nullptr},       {10, "PKWARE DCL implode", nullptr},
    {12, "bzip2", decodeBzip2},    {14, "LZMA", decodeLzma},        {18, "IBM TERSE", nullptr},
    {19, "IBM LZ77", nullptr},     {93, "zstd", decodeZstd},        {94, "MP3", nullptr},
    {95, "XZ", decodeXz},          {96, "JPEG", nullptr},           {97, "WavPack", nullptr},
    {98, "PPMd", nullptr},         {99, "AES encryption", nullptr},
};

const Method* findMethod(std::uint16_t id) {
    const auto* found = std::find_if(std::begin(kMethods), std::end(kMethods),
                                     [id](const Method& method) { return method.id == id; });
    return found == std::end(kMethods) ? nullptr : found;
}

} // namespace

std::string methodName(std::uint16_t method) {
    const Method* found = findMethod(method);
    return found == nullptr ? "unknown" : found->name;
}

bool isSupported(std::uint16_t method) {
    const Method* found = findMethod(method);
    return found != nullptr && found->decoder != nullptr;
}

void decode(std::uint16_t method, std::string_view data, std::uint64_t declaredSize, std::uint64_t memory,
            const Sink& sink) {
    if (!isSupported(method)) {
        throw std::logic_error("no decoder for method " + std::to_string(method));
    }
    // Some writers give an empty file no compressed data at all, whatever its method.
    if (data.empty()) {
        return;
    }
    findMethod(method)->decoder(data, declaredSize, memory, sink);
}

} // namespace opc::zwservices::detail
