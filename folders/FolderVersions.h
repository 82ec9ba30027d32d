#pragma once

// The tags that name the version of a folder record. The position in the list, counted from 1, is the version.
namespace qfc {

inline constexpr const char* kFolderVersionTags[] = {
    "F73C5D01-87F4-4283-84DE-E7FB9B0AADEB",
    "F084123F-09DE-41A8-983E-838D99360969",
    "2D13C9D1-F9D7-4415-BDAC-D2D21AE79E38",
    "7974943A-25B8-405B-A276-A6037A049880",
};

// What a new folder carries; no version at all.
inline constexpr const char* kNoFolderVersionTag = "00000000-0000-0000-0000-000000000000";

}  // namespace qfc
