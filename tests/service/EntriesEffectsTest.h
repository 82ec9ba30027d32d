#pragma once

#include "items/Handles.h"
#include "tests/support/EffectFixture.h"
#include "tests/support/RawDb.h"

#include <string>
#include <vector>

// The entry functions and operations on effects, with what callbacks saw.
namespace qfc::test {

using Manager = QFCLibraryManager;

inline constexpr GUID kOther{9, 9, 9, {}};

class EntriesEffects : public EffectFixture {
protected:
    void SetUp() override {
        EffectFixture::SetUp();
        m_pMore = MakeFolder("", "More");
        Listen("count", [this](QFCLibCallbackParam* pParam) {
            if (pParam->hGallery == m_hMedia) m_seen.push_back(*pParam);
            return 1;
        });
    }
    DBTools* Tools() const { return m_pClips->GetDBTools(); }
    static void RefuseWrites(const std::string& table) { qfc::test::RefuseWrites(DatabaseFile(), table); }
    int AddFilterOf(const DS_Filter_File_Record& file, CQItem* pItem, const std::vector<CString>& paths = {"Clips"}) {
        const int nQueued = Manager::fnAddItemAsync_Filter(file, 5, m_hMedia, paths, pItem, 0);
        Settle();
        return nQueued;
    }
    int AddTransitionOf(const DS_Transition_Record& transition, CQItem* pItem,
                        const std::vector<CString>& paths = {"Clips"}) {
        const int nQueued = Manager::fnAddItemAsync_Transition(transition, m_hMedia, paths, pItem, 0);
        Settle();
        return nQueued;
    }

    CQFolder* m_pMore = nullptr;
    std::vector<QFCLibCallbackParam> m_seen;  // Written by the worker; read when it is settled.
};

}  // namespace qfc::test
