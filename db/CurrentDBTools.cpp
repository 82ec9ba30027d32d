#include "db/CurrentDBTools.h"

#include <atomic>

namespace qfc {
namespace {

std::atomic<DBTools*> g_current = nullptr;

}  // namespace

void SetCurrentDBTools(DBTools* tools) { g_current = tools; }

DBTools* CurrentDBTools() { return g_current; }

bool IsCurrentDBTools(const DBTools* tools) { return g_current == tools; }

}  // namespace qfc
