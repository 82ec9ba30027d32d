#pragma once

#include <atomic>
#include <cstdint>

// What is noted, process-wide, about changes of folder trees. Any thread.
namespace qfc {

// Set whenever a folder is added to a tree; nothing here ever clears it.
bool IsTreeModified();
void SetTreeModified(bool bModified);

// Counts every change that could alter which storage numbers a tree uses: the sub-folder lists count into it
// themselves, folders when their number changes. What was derived from trees is good as long as the
// count stands still.
std::atomic<std::uint64_t>& TreeChanges();

}  // namespace qfc
