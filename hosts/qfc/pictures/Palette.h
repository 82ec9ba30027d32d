#pragma once

#include "hosts/qfc/pictures/Drawing.h"

// The colours of contact sheets and film strips: a dark room, warm marks, quiet texts. Constants.
namespace qfc::host::palette {

inline constexpr Colour kGround = {0x15181D};
inline constexpr Colour kAccent = {0xE8A33D};
inline constexpr Colour kTitle = {0xF4F1EA};
inline constexpr Colour kName = {0xDDE1E7};
inline constexpr Colour kQuiet = {0x8C95A3};
inline constexpr Colour kRule = {0x2C323B};

inline constexpr Colour kCardTop = {0x282D36};
inline constexpr Colour kCardBottom = {0x20242B};
inline constexpr Colour kCardEdge = {0xFFFFFF, 0.05};
inline constexpr Colour kMat = {0x171A1F};  // in place of a picture
inline constexpr Colour kBadge = {0x000000, 0.66};
inline constexpr Colour kBadgeText = {0xFFFFFF};

inline constexpr Colour kPictureEdge = {0xFFFFFF, 0.10};
inline constexpr Colour kDarkPictureEdge = {0xFFFFFF, 0.34};

inline constexpr Colour kCelluloidTop = {0x3A322A};
inline constexpr Colour kCelluloidBottom = {0x2A241E};
inline constexpr Colour kPerforation = kGround;
inline constexpr Colour kPrint = kAccent;
inline constexpr Colour kQuietPrint = {0xC9B28F};

// The line around a picture. One that is nearly black along its border would else be lost in the dark.
Colour EdgeOf(const Picture& picture);

}  // namespace qfc::host::palette
