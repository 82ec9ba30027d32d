#include "hosts/qfc/library/Output.h"

#include "api/QFCLib.h"
#include "hosts/qfc/OutputFile.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/LibraryFile.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

namespace qfc::host {
namespace fs = std::filesystem;

void RequirePictureName(const std::string& name) {
    std::string extension = fs::path(name).extension().string();
    for (char& c : extension) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (extension != ".png") throw WrongUsage("a picture's name ends in .png: " + name);
}

fs::path OutputPath(const std::string& name) {
    const auto target = FileToReplace(name);
    if (!target) throw Failure(name + " is not a regular file");
    if (IsOwnLibrary(*target)) throw Failure(name + " is the library itself");
    if (IsBesideOwnLibrary(*target)) throw Failure(name + " belongs to the library");
    return *target;
}

void RefuseMediaFile(Galleries& galleries, const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) return;
    for (CQGallery* gallery : galleries.All()) {
        for (CQFolder* folder : WholeTree(*gallery)) {
            for (const CQItem* item : Items(*folder)) {
                if (!fs::equivalent(file, ToText(item->GetFileName()), error) || error) continue;
                throw Failure(file.string() + " is the file of the item " + PathOf(*folder, *item));
            }
        }
    }
}

}  // namespace qfc::host
