#pragma once
// The array library's creation, ownership and destruction functions.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cppcompat/span.hpp"
#include "zx/zx_array.hpp"

namespace matrix {

/** Destroys `array` at once, whatever its count: frees its data and drops its elements. */
void destroyArray(zxArray_tag* array);

/** Applies the release rule to `array` (null is ignored). */
void releaseArray(const zxArray_tag* array);

/** Owning handle of one reference to an array; its destructor applies the release rule. */
class zx_array_handle {
public:
    zx_array_handle() = default;
    explicit zx_array_handle(zxArray_tag* array) : array_(array) {}
    zx_array_handle(zx_array_handle&& other) noexcept : array_(std::exchange(other.array_, nullptr)) {}
    zx_array_handle& operator=(zx_array_handle&& other) noexcept {
        zx_array_handle(std::move(other)).swap(*this);
        return *this;
    }
    zx_array_handle(const zx_array_handle&) = delete;
    zx_array_handle& operator=(const zx_array_handle&) = delete;
    ~zx_array_handle() { releaseArray(array_); }

    zxArray_tag* get() const { return array_; }
    zxArray_tag* operator->() const { return array_; }
    explicit operator bool() const { return array_ != nullptr; }

    /** Gives up ownership: the caller now holds the reference. */
    zxArray_tag* release() { return std::exchange(array_, nullptr); }

    void swap(zx_array_handle& other) noexcept { std::swap(array_, other.array_); }

    /** Moves the reference into a shared pointer without changing the count. */
    operator SharedZxArrayPtr() && { return SharedZxArrayPtr(release(), false); }

private:
    zxArray_tag* array_ = nullptr;
};

/** Takes ownership of the reference that `array` carries. */
zx_array_handle from_zentab(zxArray_tag* const& array);

namespace detail {

/** A new numeric array of the given dimensions with uninitialised data and one reference. */
zxArray_tag* do_create_uninitnumeric(cppcompat::detail::span::span<unsigned long const> dims,
                                     zxClassID classID, zxComplexity complexity);

namespace noninlined::zx_array_api {

/** Sets the scope of `array`. */
void zxSetArrayScope(zxArray_tag* array, zxVariableScope scope);

} // namespace noninlined::zx_array_api

} // namespace detail

/** A new 1-by-n character array holding `text`, with one reference. */
zxArray_tag* createCharRow(std::u16string_view text);

/** A new character array of the given dimensions holding `text` in column-major order, with one
    reference. @throw std::invalid_argument if the length of `text` isn't the number of elements. */
zxArray_tag* createCharArray(cppcompat::detail::span::span<unsigned long const> dims,
                             std::u16string_view text);

/** The whole text of a character array, in column-major order.
    @throw std::invalid_argument if `array` isn't a character array. */
std::u16string getCharText(const zxArray_tag* array);

/** Whether `array` is one row of text: a character array of at most one row. */
bool isCharRow(const zxArray_tag* array);

/** Whether `array` is a list of texts: a character row, or a cell array of any shape whose
    elements are all character rows. */
bool isTextList(const zxArray_tag* array);

/** The texts of a list of texts, in element order. @throw std::invalid_argument if `array`
    isn't one. */
std::vector<std::u16string> getTextList(const zxArray_tag* array);

/** A new 1-by-n cell array of character rows of `texts`, in order, with one reference. */
zxArray_tag* createCellRowOfText(const std::vector<std::u16string>& texts);

/** A new cell array of the given dimensions with empty elements, with one reference. */
zxArray_tag* createCellArray(cppcompat::detail::span::span<unsigned long const> dims);

/** A new object array of class `objectClass` and the given dimensions, with empty elements and
    one reference. The class system fills the elements. */
zxArray_tag* createObjectArray(cppcompat::detail::span::span<unsigned long const> dims,
                               const zcos::COSClass* objectClass);

/** Size in bytes of one element of a numeric class (0 for non-numeric classes). */
std::size_t elementSizeOf(zxClassID classID);

} // namespace matrix

namespace zwhost::arrays {

/** Number of arrays created and not yet destroyed, in the whole process. */
std::int64_t liveCount();

} // namespace zwhost::arrays
