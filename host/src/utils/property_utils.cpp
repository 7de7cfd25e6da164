#include "reference/utils/property_utils.hpp"

#include "matrix/matrix.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/messages.hpp"

namespace reference::utils {

void setStringProperty(std::u16string& field, const std::u16string* value) {
    zwhost::fault::point("setStringProperty");
    if (value != nullptr) {
        field = *value;
    }
}

const zxArray_tag* accessStringVectorCache(SharedZxArrayPtr& cache,
                                           const std::vector<std::u16string>& strings) {
    zwhost::fault::point("accessStringVectorCache");
    if (!cache) {
        cache = matrix::from_zentab(matrix::createCellRowOfText(strings));
    }
    return cache.get();
}

void setStringVectorAndCache(const zxArray_tag* value, SharedZxArrayPtr& cache,
                             std::vector<std::u16string>& strings) {
    zwhost::fault::point("setStringVectorAndCache");
    if (value == nullptr) {
        return;
    }
    if (!matrix::isTextList(value)) {
        throw zwhost::messages::MsgIDError({{}, "ZENTAB:utils", "RequireTextArray"});
    }
    // The new array is built before anything is stored, so a failure leaves both as they were.
    std::vector<std::u16string> texts = matrix::getTextList(value);
    SharedZxArrayPtr rebuilt = matrix::from_zentab(matrix::createCellRowOfText(texts));
    strings = std::move(texts);
    cache = std::move(rebuilt);
}

SharedZxArrayPtr copyZxArrayToSharedZxArrayPtr(const zxArray_tag* value) {
    zwhost::fault::point("copyZxArrayToSharedZxArrayPtr");
    return SharedZxArrayPtr(value);
}

} // namespace reference::utils
