#include "folders/GlobalProc.h"

#include <atomic>

namespace qfc {

namespace {
std::atomic<GlobalProc> g_proc = nullptr;
}

void SetGlobalProc(GlobalProc proc) { g_proc = proc; }
GlobalProc CurrentGlobalProc() { return g_proc; }

}  // namespace qfc
