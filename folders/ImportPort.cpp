#include "folders/ImportPort.h"

#include <atomic>

namespace qfc {

namespace {
std::atomic<ImportPort> g_port = nullptr;
}

void SetImportPort(ImportPort port) { g_port = port; }
ImportPort CurrentImportPort() { return g_port; }

}  // namespace qfc
