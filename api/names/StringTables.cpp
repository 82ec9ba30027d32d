#include "api/names/StringTables.h"

#include "platform/text/AnsiText.h"

#include <map>
#include <mutex>
#include <utility>

namespace qfc {
namespace {

constexpr std::size_t kLongestText = 260;

using StringTable = std::map<UINT, CString>;

struct StringTables {
    std::mutex mutex;
    std::map<HINSTANCE, StringTable> byModule;
};

StringTables& Tables() {
    static StringTables tables;
    return tables;
}

}  // namespace

bool SetModuleStrings(HINSTANCE module, const ModuleString* strings, std::size_t count) {
    if (module == nullptr) return false;
    StringTable table;
    for (std::size_t i = 0; strings != nullptr && i < count; ++i) table[strings[i].id] = strings[i].text;
    StringTables& tables = Tables();
    const std::lock_guard lock(tables.mutex);
    if (table.empty()) {
        tables.byModule.erase(module);
    } else {
        tables.byModule[module] = std::move(table);
    }
    return true;
}

CString ModuleText(HINSTANCE module, UINT id) {
    StringTables& tables = Tables();
    const std::lock_guard lock(tables.mutex);
    const auto table = tables.byModule.find(module);
    if (table == tables.byModule.end()) return {};
    const auto text = table->second.find(id);
    return text != table->second.end() ? CString(CutAnsi(text->second.View(), kLongestText)) : CString();
}

}  // namespace qfc
