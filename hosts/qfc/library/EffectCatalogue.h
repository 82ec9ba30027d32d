#pragma once

#include "hosts/qfc/effects/ProbeReport.h"
#include "hosts/qfc/library/Galleries.h"
#include "platform/framework/Guid.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

class CQItem;

namespace qfc::host {

inline constexpr const char* kTransitionsGallery = "4";
inline constexpr const char* kFiltersGallery = "6";

// A filter or a transition that the library knows: by its record, by its item, or, as it should be, by both.
struct KnownEffect {
    bool isTransition = false;
    GUID guid{};
    CQItem* item = nullptr;
    bool isRecorded = false;

    // What the blocks of the record say; all at their defaults when they are not of the layout of docs/effects.md.
    struct Facts {
        std::string name;
        std::string author;
        std::string explanation;
        std::int32_t majorVersion = 0;
        std::int32_t minorVersion = 0;
        struct Parameter {
            std::string name;
            std::uint8_t type = 0;
        };
        std::vector<Parameter> parameters;
        std::size_t parameterCount = 0;  // Those included that are left out above.
        bool noVisibleEffect = false;    // At the defaults; of filters.
    } facts;
    std::optional<FileStamp> stamp;  // Of the file, when it was read.
};

struct KnownFile {
    std::string path;
    std::optional<int> filterCount;  // Of the file's row; nothing without one.
    std::vector<KnownEffect> effects;

    // It could not be read when it was tried last.
    bool IsFailed() const { return filterCount == 0 && effects.empty(); }
    bool HasRecords() const;
};

// All effects that the library knows, file by file, as it was when this was made. Opens no plugin. Items belong to the
// loaded galleries and may go. Main thread, no adds under way.
class EffectCatalogue {
public:
    // Throws Failure when the store cannot be read.
    explicit EffectCatalogue(Galleries& galleries);

    const std::map<std::string, KnownFile>& Files() const { return m_files; }
    // Null for a path that is not known.
    const KnownFile* Find(const std::string& path) const;
    // The files that have the same name in one folder or another.
    std::vector<const KnownFile*> SameName(const std::string& baseName) const;

private:
    void ReadFilters();
    void ReadTransitions();
    void ReadItems(CQGallery& gallery, bool isTransition);
    KnownFile& FileAt(const std::string& path);

    std::map<std::string, KnownFile> m_files;
    std::multimap<std::string, const KnownFile*> m_byName;
};

// The file that a text means: as it is stored, or a path that leads to it. Null for one that is not known.
const KnownFile* FindEffectFile(const EffectCatalogue& catalogue, const std::string& text);

// Whether any of its effects has a GUID that no scan gives: another program stored it, and a scan leaves the file
// alone.
bool HasForeignEffects(const KnownFile& file);

// Nothing is at the path any more.
bool IsFileGone(const std::string& path);

}  // namespace qfc::host
