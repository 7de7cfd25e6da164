#pragma once
// Decoders for the compression methods of zip entries, fed the raw data of an entry.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace opc::zwservices::detail {

/** Takes the next piece of decoded output; throws to stop decoding. */
using Sink = std::function<void(const char* data, std::size_t size)>;

/** The name of compression method `method`, such as "deflate" or "PPMd". */
std::string methodName(std::uint16_t method);

/** Whether `method` is one that decode reads: store, deflate, bzip2, LZMA, XZ or zstd. */
bool isSupported(std::uint16_t method);

/** Decodes `data`, compressed with a supported `method`, into `sink`, using at most `memory`
    bytes of decoder state. `declaredSize` is the entry's uncompressed size.
    @throw std::runtime_error Thrown when the data is damaged or needs more state than allowed;
    the message says what went wrong without naming the entry. */
void decode(std::uint16_t method, std::string_view data, std::uint64_t declaredSize, std::uint64_t memory,
            const Sink& sink);

} // namespace opc::zwservices::detail
