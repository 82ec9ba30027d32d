#include "hosts/qfc/library/EffectWriter.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <utility>

namespace qfc::host {
namespace {

// The pictures of that many are in memory at a time.
constexpr std::size_t kMostOnTheWay = 16;
// The library carries an option along with a filter; frei0r has none.
constexpr unsigned kNoOption = 0;

EffectOutcome OutcomeOf(const EffectSource& source) {
    EffectOutcome outcome;
    outcome.isTransition = source.effect.isTransition;
    outcome.guid = EffectGuid(BaseNameOf(source.path), source.effect.index);
    outcome.file = source.path;
    outcome.name = EffectItemName(source.effect.name);
    return outcome;
}

bool QueueAdd(const EffectSource& source, CQGallery& gallery, const std::string& folder, CQItem& item) {
    const ULONGLONG handle = ToHandle(&gallery);
    const std::vector<CString> paths{ToCString(folder)};
    return source.effect.isTransition ? QFCLibraryManager::fnAddItemAsync_Transition(MakeTransitionRecord(source),
                                                                                     handle, paths, &item, 0) != 0
                                      : QFCLibraryManager::fnAddItemAsync_Filter(MakeFilterRecord(source), kNoOption,
                                                                                 handle, paths, &item, 0) != 0;
}

bool UpdateNow(const EffectSource& source, CQGallery& gallery, const GUID& guid, CQItem& item) {
    const ULONGLONG handle = ToHandle(&gallery);
    return source.effect.isTransition
               ? QFCLibraryManager::fnUpdateTransitionAsync(handle, &item, guid, MakeTransitionRecord(source)) != 0
               : QFCLibraryManager::fnUpdateFilterOptionAsync(handle, &item, guid, MakeFilterRecord(source),
                                                              kNoOption) != 0;
}

// The name with the lowest number behind it that makes it one of its own; a first one has none. Neighbours share
// neither the stored name nor what is shown.
template <class IsTaken>
std::string ApartName(const CQItem& item, const std::string& name, const IsTaken& isTaken) {
    for (int number = 1;; ++number) {
        std::string apart = number == 1 ? name : name + " (" + std::to_string(number) + ")";
        if (!isTaken(apart) && !isTaken(ShownAs(item, apart))) return apart;
    }
}

// Whether the item is called as its effect is, be it with a number.
bool IsNamedAfter(const std::string& itemName, const std::string& effectName) {
    if (!itemName.starts_with(effectName)) return false;
    const std::string rest = itemName.substr(effectName.size());
    if (rest.empty()) return true;
    return rest.size() > 3 && rest.starts_with(" (") && rest.ends_with(")") &&
           rest.find_first_not_of("0123456789", 2) == rest.size() - 1;
}

// The effects of its file that are to be brought up to date behind this one, by GUID.
std::map<GUID, const ProbedEffect*> EffectsBehind(const EffectSource& source) {
    std::map<GUID, const ProbedEffect*> effects;
    const std::string baseName = BaseNameOf(source.path);
    for (const ProbedEffect& effect : source.report.effects) {
        if (effect.index > source.effect.index) effects[EffectGuid(baseName, effect.index)] = &effect;
    }
    return effects;
}

// Whether the item is about to be called otherwise, since its effect is.
bool GivesItsNameUp(CQItem& item, const ProbedEffect& effect) {
    const std::string name = ToText(item.GetItemName());
    return IsNamedAfter(name, EffectItemName(EffectFactsOf(item).name)) &&
           !IsNamedAfter(name, EffectItemName(effect.name));
}

// The very object; added items stand at the end, unless the folder was sorted.
bool StandsIn(CQFolder& folder, const CQItem& item) {
    const std::vector<CQItem*> items = Items(folder);
    return std::find(items.rbegin(), items.rend(), &item) != items.rend();
}

// Waits until the library has run everything that was queued before.
void AwaitQueuedWork() {
    // Without a gallery this changes nothing, and it runs behind all ordinary work.
    CQItem nobody;
    QFCLibraryManager::fnUpdateTransitionAsync(0, &nobody, nobody.GetUniqueID(), {});
}

}  // namespace

EffectWriter::EffectWriter(Galleries& galleries) : m_galleries(galleries) {}

EffectWriter::~EffectWriter() { Settle(); }

EffectWriter::Shelf& EffectWriter::ShelfOf(bool isTransition) {
    Shelf& shelf = isTransition ? m_transitions : m_filters;
    if (shelf.folders) return shelf;
    Settle();
    if (shelf.gallery == nullptr) {
        shelf.gallery = &m_galleries.Open(isTransition ? kTransitionsGallery : kFiltersGallery);
    }
    shelf.folders.emplace(*shelf.gallery, FolderMaker::Names::kShown);
    shelf.names.clear();
    for (CQFolder* folder : WholeTree(*shelf.gallery)) {
        for (const CQItem* item : Items(*folder)) {
            shelf.names[folder].insert({ToText(item->GetItemName()), ShownName(*item)});
        }
    }
    return shelf;
}

void EffectWriter::Add(const EffectSource& source, const std::vector<std::string>& folder) {
    if (m_pending.size() >= kMostOnTheWay) Settle();
    Shelf& shelf = ShelfOf(source.effect.isTransition);
    Pending pending;
    pending.outcome = OutcomeOf(source);
    pending.item = MakeEffectItem(source);
    const std::size_t foldersBefore = shelf.folders->Made().size();
    pending.folder = pending.item != nullptr ? shelf.folders->Make(folder) : nullptr;
    if (pending.folder == nullptr) {
        m_outcomes.push_back(pending.outcome);
        return;
    }
    NameApart(shelf, *pending.folder, *pending.item);
    pending.outcome.name = ToText(pending.item->GetItemName());
    pending.outcome.folder = JoinPath(folder);
    pending.outcome.folderRow = pending.folder->GetDBId();
    pending.outcome.isFolderNew = shelf.folders->Made().size() > foldersBefore;
    if (!QueueAdd(source, *shelf.gallery, shelf.folders->StoredPath(*pending.folder), *pending.item)) {
        m_outcomes.push_back(pending.outcome);
        return;
    }
    m_pending.push_back(std::move(pending));
}

void EffectWriter::NameApart(Shelf& shelf, const CQFolder& folder, CQItem& item) {
    std::multiset<std::string>& names = shelf.names[&folder];
    const std::string name =
        ApartName(item, ToText(item.GetItemName()), [&](const std::string& taken) { return names.contains(taken); });
    item.SetItemName(ToCString(name));
    names.insert({name, ShownName(item)});
}

void EffectWriter::NoteRenamed(Shelf& shelf, const std::vector<CQFolder*>& folders, const Names& from,
                               const Names& to) {
    for (const CQFolder* folder : folders) {
        std::multiset<std::string>& names = shelf.names[folder];
        for (const std::string& name : {from.stored, from.shown}) {
            if (const auto taken = names.find(name); taken != names.end()) names.erase(taken);
        }
        names.insert({to.stored, to.shown});
    }
}

// A name that the user gave stays, and so does one with a number while the effect is called so; a new one is told from
// its neighbours, but not from what they are called no more in a moment. Nothing is under way.
void EffectWriter::KeepName(CQGallery& gallery, const KnownEffect& known, const EffectSource& source, CQItem& item) {
    const std::string old = ToText(known.item->GetItemName());
    const std::string effect = EffectItemName(EffectFactsOf(*known.item).name);
    const std::string name = ToText(item.GetItemName());
    if (!IsNamedAfter(old, effect) || IsNamedAfter(old, name)) {
        item.SetItemName(known.item->GetItemName());
        return;
    }
    const auto behind = EffectsBehind(source);
    std::set<std::string> names;
    for (CQFolder* folder : FoldersOf(gallery, known.guid)) {
        for (CQItem* other : Items(*folder)) {
            if (other == known.item) continue;
            const auto next = behind.find(std::as_const(*other).GetUniqueID());
            if (next != behind.end() && GivesItsNameUp(*other, *next->second)) continue;
            names.insert({ToText(other->GetItemName()), ShownName(*other)});
        }
    }
    const auto isTaken = [&](const std::string& taken) { return names.contains(taken); };
    item.SetItemName(ToCString(ApartName(item, name, isTaken)));
}

void EffectWriter::Settle() {
    if (m_pending.empty()) return;
    AwaitQueuedWork();
    for (Pending& pending : m_pending) Conclude(pending);
    m_pending.clear();
}

void EffectWriter::Conclude(Pending& pending) {
    if (StandsIn(*pending.folder, *pending.item)) {
        ReleasePayloads(*pending.item);
        static_cast<void>(pending.item.release());  // The gallery's now.
        pending.outcome.isStored = HoldsItem(*pending.folder, pending.outcome.guid);
    }
    m_outcomes.push_back(pending.outcome);
}

void EffectWriter::Update(const KnownEffect& known, const EffectSource& source) {
    Shelf& shelf = ShelfOf(source.effect.isTransition);
    CQGallery& gallery = *shelf.gallery;
    Settle();
    EffectOutcome outcome = OutcomeOf(source);
    const std::unique_ptr<CQItem> item = MakeEffectItem(source);
    // The library would not say that there is nothing to be brought up to date.
    if (item != nullptr && gallery.HasItem(known.guid, 1) != 0) {
        item->GetAnnotation() = std::as_const(*known.item).GetAnnotation();
        KeepName(gallery, known, source, *item);
        const Names before{ToText(known.item->GetItemName()), ShownName(*known.item)};
        outcome.isStored = UpdateNow(source, gallery, known.guid, *item);
        outcome.name = ToText(item->GetItemName());
        ReleasePayloads(*known.item);
        const Names after = outcome.isStored == true ? Names{outcome.name, ShownName(*item)} : before;
        NoteRenamed(shelf, FoldersOf(gallery, known.guid), before, after);
    }
    const std::vector<CQFolder*> folders = FoldersOf(gallery, known.guid);
    if (!folders.empty()) outcome.folder = PathOf(*folders.front());
    m_outcomes.push_back(outcome);
}

void EffectWriter::ForgetFolders() {
    m_filters.folders.reset();
    m_transitions.folders.reset();
}

}  // namespace qfc::host
