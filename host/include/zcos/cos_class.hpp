#pragma once
// Classes of the class system: a registry by interned name, each class with its constructor,
// the deleter of the data its objects wrap, and its properties by name.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "matrix/matrix.hpp"
#include "zcos/cos_object.hpp"
#include "zcos/interned.hpp"

namespace zcos {

/** A property of a class: reads and writes host arrays on an object. */
struct COSProperty {
    std::string name;
    /** Gives the value, with one reference for the caller. */
    std::function<matrix::zx_array_handle(const COSObject&)> get;
    /** Sets the value; the caller keeps `value`. */
    std::function<void(COSObject&, const zxArray_tag* value)> set;
};

/** A class of the class system. Classes are registered once and live for the process. */
class COSClass final : public COSDescriptor {
public:
    /** Builds a new object of the class from `argc` arguments. */
    using Constructor =
        std::function<COSInterfacePtr(const COSClass&, int argc, const zxArray_tag* const* argv)>;
    /** Deletes the data an object of the class wraps. */
    using Deleter = void (*)(void* data) noexcept;

    /** What a class is made of. */
    struct Definition {
        std::string name;
        /** Empty: the class can't be constructed from arguments. */
        Constructor construct;
        /** Null: objects borrow their data and never delete it. */
        Deleter deleteData = nullptr;
        std::vector<COSProperty> properties;
    };

    explicit COSClass(Definition definition);
    COSClass(const COSClass&) = delete;
    COSClass& operator=(const COSClass&) = delete;
    ~COSClass() = default;

    /** The registered class of that name; not owned.
        @throw std::out_of_range if no class of that name is registered. */
    static COSClass* getClass(const COSInternedBase<internal::IdEmptyPolicy>& name);

    /** The key of the class: its interned name. */
    COSKey getKey() const override { return name_.get(); }

    const COSClassName& getName() const { return name_; }
    const Definition& definition() const { return definition_; }

    /** The property named `name`. @throw std::out_of_range if the class has none of that name. */
    const COSProperty& property(std::string_view name) const;

private:
    COSClassName name_;
    Definition definition_;
};

} // namespace zcos
