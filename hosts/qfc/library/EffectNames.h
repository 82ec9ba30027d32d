#pragma once

#include "platform/framework/Guid.h"

#include <string>
#include <string_view>

namespace qfc::host {

// What effects are known by. Functions without state; any thread.

// The name by which an effect file is the same one wherever it lies: that without its folder.
std::string BaseNameOf(const std::string& path);

// The GUID of the effect with this index in a file of that base name: always the same one, so that an effect keeps its
// item when its file moves.
GUID EffectGuid(std::string_view baseName, unsigned index);
// Whether it is one of these, of any index that an effect can have.
bool IsEffectGuid(const GUID& guid, std::string_view baseName);

// A GUID that stands for a text of any kind.
GUID NamedGuid(std::string_view name);

// What the item of an effect is called: one that a path can reach.
std::string EffectItemName(const std::string& name);

}  // namespace qfc::host
