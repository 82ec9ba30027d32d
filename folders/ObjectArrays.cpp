#include "folders/ObjectArrays.h"

#include <algorithm>

namespace qfc {

bool Holds(const CObArray* array, const CObject* object) {
    return array != nullptr && object != nullptr && std::find(array->begin(), array->end(), object) != array->end();
}

void DropOccurrences(CObArray& array, const CObject* object) {
    for (int position = array.GetSize() - 1; position >= 0; --position) {
        if (array.GetAt(position) == object) array.RemoveAt(position);
    }
}

}  // namespace qfc
