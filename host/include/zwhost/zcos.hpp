#pragma once
// The host's own access to the class system, for embedding programs, tools and tests:
// registering classes, reading and writing properties by name, counting live objects.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "matrix/matrix.hpp"
#include "zcos/cos_class.hpp"
#include "zcos/cos_object.hpp"

namespace zwhost::zcos {

/** Registers a class under its name; the registry keeps it for the process.
    @throw std::invalid_argument if a class of that name is registered already. */
::zcos::COSClass& registerClass(::zcos::COSClass::Definition definition);

/** The registered class named `name`, or null. */
::zcos::COSClass* findClass(std::string_view name);

/** A new object of `cls` holding `underlying` as the array under it (a value object). */
::zcos::COSInterfacePtr makeValueObject(const ::zcos::COSClass& cls, SharedZxArrayPtr underlying);

/** A new 1-by-1 object array holding `object`, with one reference for the caller. */
matrix::zx_array_handle makeObjectArray(const ::zcos::COSInterfacePtr& object);

/** The property `name` of element `index` of the object array `objects`, with one reference
    for the caller. @throw std::out_of_range for an unknown property or index. */
matrix::zx_array_handle getProperty(const zxArray_tag* objects, std::size_t index, std::string_view name);

/** Sets the property `name` of element `index` of `objects` to `value`; the caller keeps
    `value`. @throw std::out_of_range for an unknown property or index. */
void setProperty(const zxArray_tag* objects, std::size_t index, std::string_view name,
                 const zxArray_tag* value);

/** Number of objects created and not yet destroyed, in the whole process. */
std::int64_t liveObjectCount();

} // namespace zwhost::zcos
