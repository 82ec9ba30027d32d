#pragma once

namespace qfc {

// Turns errno into the last error of the thread. Always false, so that a failing function can return it.
bool FailWithErrno();

}  // namespace qfc
