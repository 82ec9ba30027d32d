#pragma once

class CQGallery;

namespace qfc {

// Destroys a gallery with every item that its folders hold, those included that clearing leaves alone because their
// folder belongs to another database than the current one. Each object dies once, however many folders hold it. The
// gallery may be listed in the document. Threads: the tree is the caller's alone.
void DestroyWithItems(CQGallery* gallery);

}  // namespace qfc
