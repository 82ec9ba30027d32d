#include "bench/BenchLibrary.h"

#include "api/GalleryApi.h"
#include "items/CQGalleryDoc.h"
#include "items/Handles.h"
#include "platform/os/Memory.h"
#include "platform/os/Places.h"
#include "service/QFCLibraryManager.h"

#include <cstring>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <stdlib.h>

namespace qfc::bench {

std::vector<unsigned char> MakePayload(std::size_t size) {
    std::mt19937 random(static_cast<unsigned>(size));
    std::vector<unsigned char> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<unsigned char>((i / 3 + i / 480) % 256);
        if (random() % 4 == 0) bytes[i] = static_cast<unsigned char>(bytes[i] + random() % 8);
    }
    return bytes;
}

BenchLibrary& BenchLibrary::Get() {
    static BenchLibrary library;
    return library;
}

BenchLibrary::BenchLibrary() {
    std::string name = (std::filesystem::current_path() / "qfclib-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the benchmark library");
    m_folder = name + "/";
    if (!SetDataFolder(m_folder.c_str()) || QFCLibraryManager::fnStartService() != 1) {
        throw std::runtime_error("the service does not start");
    }
    m_gallery = QFCLibraryManager::fnCreateGallery(1, "Media", 0, 0, 0);
    QFCLibraryManager::fnRegister_QFCLibCallBack("bench", [this](QFCLibCallbackParam*) {
        ++m_finished;
        return 1;
    });
}

BenchLibrary::~BenchLibrary() {
    GetGalleryDoc()->CloseGallery(AsGallery(m_gallery));
    QFCLibraryManager::fnStopService();
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

CString BenchLibrary::NewFolder() {
    CString name;
    name.Format("Folder %d", ++m_folders);
    QFCLibraryManager::fnCreateFolder(m_gallery, "", name, 0, 0, 0, 0);
    return name;
}

std::unique_ptr<CQItem> MakeItem(const std::vector<unsigned char>& payload) {
    auto item = std::make_unique<CQItem>("A clip of the benchmark.mp4");
    item->SetFileName("/media/footage/2024/A clip of the benchmark.mp4");
    item->SetItemType(1);
    item->GetDescription() = "2024 5 6 10 20 30 2024 5 6 10 20 30";
    void* box = AllocPlainBlock(payload.size());
    std::memcpy(box, payload.data(), payload.size());
    item->ChangeBlackBox(box, static_cast<unsigned>(payload.size()));
    return item;
}

}  // namespace qfc::bench
