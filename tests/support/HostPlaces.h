#pragma once

#include "tests/support/TempFolder.h"

#include <stdlib.h>
#include <string>
#include <string_view>

namespace qfc::test {

// A data folder and a host's folder with an "Orvel.dat" of its own. What is found out once per process is found out
// here, so a test that uses it has its process for itself.
class HostPlaces {
public:
    HostPlaces() {
        setenv("QFCLIB_DATA_DIR", m_folder.MakeFolder("data").c_str(), 1);
        setenv("QFCLIB_HOST_DIR", m_folder.MakeFolder("host").c_str(), 1);
        m_folder.MakeFolder("host/Orvel.dat");
    }

    const TempFolder& Folder() const { return m_folder; }
    std::string TranslationFile() const { return m_folder / "host/Orvel.dat/qvTWTranslateData.dat"; }

    void TurnTranslationOn() const { ApplicationIni("[Orvel Cinelume Init Project]\nSupportTWTranslateMode=1\n"); }
    // The other mode: names are written down.
    void TurnCollectingOn() const {
        ApplicationIni(
            "[Orvel Cinelume Init Project]\nSupportTWTranslateMode=1\n[USERMODE]\nCreateTWTranslateData=1\n");
    }
    void ApplicationIni(std::string_view content) const { m_folder.Write("data/Cinelume.ini", content); }
    void Translations(std::string_view content) const {
        m_folder.Write("host/Orvel.dat/qvTWTranslateData.dat", content);
    }

private:
    TempFolder m_folder;
};

}  // namespace qfc::test
