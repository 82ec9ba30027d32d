#pragma once

#include <memory>
#include <string>

class CQItem;

namespace qfc::host {

struct DecodedMedia;

// An item of the library made of what was decoded of a file, payloads included. Null without memory. Any thread.
std::unique_ptr<CQItem> MakeItem(const DecodedMedia& media, const std::string& name);

}  // namespace qfc::host
