#pragma once

#include "hosts/qfc/library/TagBackup.h"
#include "hosts/qfc/library/TagChanges.h"

#include <functional>
#include <string>
#include <vector>

namespace qfc::host {

// Changes of tags that take several steps, as a whole: the change, or everything as before. Commands hold an Interrupt
// meanwhile, so that a first Ctrl-C does not come between the steps. Main thread.

// Makes the change. When it fails, the library is read afresh: where `isDone` finds that all of it has come about, it
// is done. Otherwise what is kept is put back; throws Failure with the reason of the change, and with what is changed
// nevertheless. `tags` shows what is stored then, if that can be read.
void ChangeOrAsBefore(Tags& tags, const TagBackup& before, const std::function<void()>& change,
                      const std::function<bool()>& isDone);

// The category with its tags and their links, or nothing of it. Throws Failure with `tagsStay` or `categoryStays`, the
// step it came to a halt at. Gives the loaded items that carried one of the tags, each once, without them.
std::vector<FoundItem> DeleteWithTags(Tags& tags, TagChanges& changes, Galleries& galleries,
                                      const CTagCategory& category, const std::string& tagsStay,
                                      const std::string& categoryStays);

}  // namespace qfc::host
