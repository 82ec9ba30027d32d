#pragma once

namespace qfc::host {

class Parser;

// The commands, group by group, each in a source of its own: what they are called, what they take, what they say about
// themselves. Each adds its commands to the parser, once. Main thread.

void AddContentCommands(Parser& parser);  // import, tree, ls, show, find
void AddOrderCommands(Parser& parser);    // gallery, mkdir, rmdir, mv, rename, rm, reorder
void AddPictureCommands(Parser& parser);  // thumbs, sheet, film
void AddLibraryCommands(Parser& parser);  // export, import-library, clear, check, translate
void AddTagCommands(Parser& parser);      // tag
void AddEffectCommands(Parser& parser);   // effects

}  // namespace qfc::host
