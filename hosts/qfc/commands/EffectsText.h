#pragma once

#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/library/EffectCatalogue.h"

#include <string>

namespace qfc::host {

// How effects are shown. Reads the tree; main thread, no adds under way.

// "filter" or "transition".
const char* KindOf(const KnownEffect& effect);
// The item's name, else the one in the record.
std::string NameOf(const KnownEffect& effect);
// Where its gallery has it.
std::vector<std::string> PathsOf(Galleries& galleries, const KnownEffect& effect);

// guid, kind, name, author, explanation, version, parameters, file, missing, gallery, paths, recorded.
Json KnownEffectJson(Galleries& galleries, const KnownFile& file, const KnownEffect& effect);

}  // namespace qfc::host
