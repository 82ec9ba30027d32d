#pragma once

#include "TagCommandsTest.h"
#include "WithFailingReads.h"

namespace qfc::test {

// Looks that fail at a library with items and tags.
using ReadFaultsTest = WithFailingReads<TagCommandsTest>;

}  // namespace qfc::test
