#pragma once
// Helpers for property accessors: string properties and string-vector properties whose host
// value is cached beside the vector.

#include <string>
#include <vector>

#include "zx/zx_array.hpp"

namespace reference::utils {

/** Makes `field` hold the text of `*value`; a null `value` changes nothing. */
void setStringProperty(std::u16string& field, const std::u16string* value);

/** The array held by `cache`; an empty cache is first filled with a new 1-by-n cell array of
    character rows of `strings`. The pointer is borrowed: the cache keeps the reference. */
const zxArray_tag* accessStringVectorCache(SharedZxArrayPtr& cache,
                                           const std::vector<std::u16string>& strings);

/** Replaces `strings` with the texts of `value` and `cache` with a new array built from them;
    a null `value` changes nothing. `value` stays the caller's.
    @throw zwhost::messages::MsgIDError "ZENTAB:utils:RequireTextArray" if `value` is neither a
    character row nor a cell array of character rows; nothing changes then. */
void setStringVectorAndCache(const zxArray_tag* value, SharedZxArrayPtr& cache,
                             std::vector<std::u16string>& strings);

/** A shared pointer holding a new reference to `value`, valid after the caller's has gone. */
SharedZxArrayPtr copyZxArrayToSharedZxArrayPtr(const zxArray_tag* value);

} // namespace reference::utils
