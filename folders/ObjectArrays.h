#pragma once

#include "platform/framework/Collections.h"

// What is asked of arrays of objects by address alone.
namespace qfc {

// False for null.
bool Holds(const CObArray* array, const CObject* object);

// Takes every occurrence of the object out of the array.
void DropOccurrences(CObArray& array, const CObject* object);

}  // namespace qfc
