#pragma once
// Objects of the class system: counted, of one class, wrapping data or holding an underlying
// array, and reached through their interface.

#include <cstdint>

#include <boost/intrusive_ptr.hpp>

#include "zx/zx_array.hpp"

namespace zcos {

class COSClass;

/** Key of a class's data: one pointer wide. */
using COSKey = const void*;

/** What an object tells of its kind. */
class COSDescriptor {
public:
    /** The key under which objects of this kind keep their data. */
    virtual COSKey getKey() const = 0;

protected:
    COSDescriptor() = default;
    COSDescriptor(const COSDescriptor&) = default;
    COSDescriptor& operator=(const COSDescriptor&) = default;
    ~COSDescriptor() = default;
};

/** The interface of an object. */
class COSInterface {
public:
    /** The descriptor of the object's class; not owned. */
    virtual const COSDescriptor* getDescriptor() const = 0;

    /** The address of the object's data kept under `*key`.
        @throw std::invalid_argument if the object keeps no data under that key. */
    virtual void* getDataByKey(const COSKey* key) const = 0;

protected:
    COSInterface() = default;
    COSInterface(const COSInterface&) = default;
    COSInterface& operator=(const COSInterface&) = default;
    ~COSInterface() = default;
};

/** An object: the wrapped data it owns (or borrows, if its class has no deleter) and the array
    under it (for value classes such as enumerations). */
class COSObject final : public zxObject, public COSInterface {
public:
    /** An object of `cls` that owns `data` and shares `underlying`; counted as live. */
    COSObject(const COSClass& cls, void* data, SharedZxArrayPtr underlying) noexcept;
    ~COSObject() override;

    const COSDescriptor* getDescriptor() const override;
    void* getDataByKey(const COSKey* key) const override;

    const COSClass& getClass() const { return *class_; }

    /** The wrapped data; null for value objects. */
    void* data() const { return data_; }

    /** The array under a value object; null for objects that wrap data. */
    const zxArray_tag* underlyingArray() const { return underlying_.get(); }

private:
    const COSClass* class_;
    void* data_;
    SharedZxArrayPtr underlying_;
};

/** A counted reference to an object. */
class COSInterfacePtr {
public:
    COSInterfacePtr() = default;

    /** Takes a new reference to `object`. */
    explicit COSInterfacePtr(COSObject* object) : object_(object) {}

    /** The object's interface. */
    COSInterface* operator->() const { return object_.get(); }

    COSObject* get() const { return object_.get(); }
    explicit operator bool() const { return static_cast<bool>(object_); }

private:
    boost::intrusive_ptr<COSObject> object_;
};

} // namespace zcos
