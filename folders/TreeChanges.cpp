#include "folders/TreeChanges.h"

namespace qfc {

namespace {
std::atomic<bool> g_treeModified = false;
std::atomic<std::uint64_t> g_treeChanges = 0;
}  // namespace

bool IsTreeModified() { return g_treeModified; }
void SetTreeModified(bool bModified) { g_treeModified = bModified; }
std::atomic<std::uint64_t>& TreeChanges() { return g_treeChanges; }

}  // namespace qfc
