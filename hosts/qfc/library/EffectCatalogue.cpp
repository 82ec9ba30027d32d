#include "hosts/qfc/library/EffectCatalogue.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

// Of a filter's table and of a transition's descriptor.
template <class Block>
void TakeFacts(KnownEffect& known, const Block& block) {
    known.stamp = FileStamp{block.fileSize, block.fileTime};
    known.facts = {block.name, block.author, block.explanation, block.majorVersion, block.minorVersion, {}, 0, false};
    for (const EffectParameter& parameter : block.parameters) {
        known.facts.parameters.push_back({parameter.name, parameter.type});
    }
}

KnownEffect KnownFilter(const FilterEntry& filter) {
    KnownEffect known;
    known.guid = filter.guidItem;
    known.isRecorded = true;
    if (const auto table = ReadFilterTable(filter.table)) {
        TakeFacts(known, *table);
        known.facts.parameterCount = table->parameterCount;
    }
    const auto descriptor = ReadFilterDescriptor(filter.descriptor);
    known.facts.noVisibleEffect = descriptor && (descriptor->flags & filter_flag::kNoVisibleEffect) != 0;
    return known;
}

KnownEffect KnownTransition(const DS_Transition_Record& transition) {
    KnownEffect known;
    known.isTransition = true;
    known.guid = transition.guidItem;
    known.isRecorded = true;
    if (const auto block = ReadTransitionDescriptor(transition.descriptor)) {
        TakeFacts(known, *block);
        known.facts.parameterCount = block->parameters.size();
    }
    return known;
}

}  // namespace

bool KnownFile::HasRecords() const { return std::ranges::any_of(effects, &KnownEffect::isRecorded); }

bool HasForeignEffects(const KnownFile& file) {
    const std::string baseName = BaseNameOf(file.path);
    return std::ranges::any_of(file.effects,
                               [&](const KnownEffect& effect) { return !IsEffectGuid(effect.guid, baseName); });
}

bool IsFileGone(const std::string& path) {
    std::error_code error;
    return std::filesystem::status(path, error).type() == std::filesystem::file_type::not_found;
}

const KnownFile* FindEffectFile(const EffectCatalogue& catalogue, const std::string& text) {
    if (const KnownFile* file = catalogue.Find(text)) return file;
    // Also of a file that is gone as much as is there is resolved.
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(text, error);
    const std::filesystem::path path = std::filesystem::weakly_canonical(absolute, error);
    return error ? nullptr : catalogue.Find(path.string());
}

EffectCatalogue::EffectCatalogue(Galleries& galleries) {
    ReadFilters();
    ReadTransitions();
    if (CQGallery* filters = galleries.Find(kFiltersGallery)) ReadItems(*filters, false);
    if (CQGallery* transitions = galleries.Find(kTransitionsGallery)) ReadItems(*transitions, true);
    for (const auto& [path, file] : m_files) m_byName.emplace(BaseNameOf(path), &file);
}

KnownFile& EffectCatalogue::FileAt(const std::string& path) {
    KnownFile& file = m_files[path];
    file.path = path;
    return file;
}

void EffectCatalogue::ReadFilters() {
    std::vector<DS_Filter_File_Record> files;
    if (!GetFilterRecord(files)) throw Failure("cannot read the filters of the library");
    for (const DS_Filter_File_Record& stored : files) {
        KnownFile& file = FileAt(ToText(stored.strFileName));
        file.filterCount = stored.nFilterCount;
        for (const FilterEntry& filter : stored.filters) file.effects.push_back(KnownFilter(filter));
    }
}

void EffectCatalogue::ReadTransitions() {
    std::vector<DS_Transition_Record> transitions;
    if (!GetTransitionRecord(transitions)) throw Failure("cannot read the transitions of the library");
    for (const DS_Transition_Record& transition : transitions) {
        FileAt(ToText(transition.strFileName)).effects.push_back(KnownTransition(transition));
    }
}

void EffectCatalogue::ReadItems(CQGallery& gallery, bool isTransition) {
    const DWORD type = isTransition ? item_type::kTransition : item_type::kVideoFilter;
    std::map<GUID, CQItem*> items;
    for (CQFolder* folder : WholeTree(gallery)) {
        for (CQItem* item : Items(*folder)) {
            if (item->GetItemType() == type) items.emplace(std::as_const(*item).GetUniqueID(), item);
        }
    }
    for (auto& [path, file] : m_files) {
        for (KnownEffect& effect : file.effects) {
            if (effect.isTransition != isTransition) continue;
            const auto found = items.find(effect.guid);
            if (found == items.end()) continue;
            effect.item = found->second;
            items.erase(found);
        }
    }
    // Of what is left only what was made by a scan is ours.
    for (const auto& [guid, item] : items) {
        const std::string path = ToText(item->GetFileName());
        if (path.empty() || !IsEffectGuid(guid, BaseNameOf(path))) continue;
        KnownEffect effect;
        effect.isTransition = isTransition;
        effect.guid = guid;
        effect.item = item;
        FileAt(path).effects.push_back(std::move(effect));
    }
}

const KnownFile* EffectCatalogue::Find(const std::string& path) const {
    const auto found = m_files.find(path);
    return found != m_files.end() ? &found->second : nullptr;
}

std::vector<const KnownFile*> EffectCatalogue::SameName(const std::string& baseName) const {
    std::vector<const KnownFile*> files;
    const auto [begin, end] = m_byName.equal_range(baseName);
    for (auto file = begin; file != end; ++file) files.push_back(file->second);
    return files;
}

}  // namespace qfc::host
