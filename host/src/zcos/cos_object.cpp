#include "zcos/cos_object.hpp"

#include <atomic>
#include <stdexcept>
#include <string>

#include "zcos/cos_class.hpp"
#include "zwhost/zcos.hpp"

namespace zcos {
namespace {

std::atomic<std::int64_t> liveObjects{};

} // namespace

COSObject::COSObject(const COSClass& cls, void* data, SharedZxArrayPtr underlying) noexcept
    : class_(&cls), data_(data), underlying_(std::move(underlying)) {
    liveObjects.fetch_add(1, std::memory_order_relaxed);
}

COSObject::~COSObject() {
    if (data_ != nullptr && class_->definition().deleteData != nullptr) {
        class_->definition().deleteData(data_);
    }
    liveObjects.fetch_sub(1, std::memory_order_relaxed);
}

const COSDescriptor* COSObject::getDescriptor() const {
    return class_;
}

void* COSObject::getDataByKey(const COSKey* key) const {
    if (*key != class_->getKey() || data_ == nullptr) {
        throw std::invalid_argument("object of class " + std::string(class_->getName().str()) +
                                    " keeps no data under this key");
    }
    return data_;
}

} // namespace zcos

namespace zwhost::zcos {

std::int64_t liveObjectCount() {
    return ::zcos::liveObjects.load(std::memory_order_relaxed);
}

} // namespace zwhost::zcos
