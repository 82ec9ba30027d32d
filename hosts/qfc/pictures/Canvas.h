#pragma once

#include "hosts/qfc/pictures/Picture.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qfc::host {

// Why a picture cannot be drawn or written, as a text for a person.
class PictureError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Colour {
    std::uint32_t rgb = 0;  // 0xRRGGBB
    double opacity = 1;
};

struct Box {
    double x = 0, y = 0, width = 0, height = 0;
    Box Shrunk(double by) const { return {x + by, y + by, width - 2 * by, height - 2 * by}; }
};

enum class Align { Left, Centre, Right };
enum class Cut { Middle, End, Start };  // where a text too long for its box loses characters to an ellipsis

struct TextStyle {
    double size = 12;  // pixels
    Colour colour;
    bool bold = false;
    Align align = Align::Left;
    Cut cut = Cut::End;
};

// A drawing surface in memory that ends as a PNG file: the few shapes that sheets and strips are made of. Texts are
// UTF-8; what is not shows replacement characters, and a system without fonts gets plain built-in letters. One thread
// at a time.
class Canvas {
public:
    // The largest side a canvas can have.
    static constexpr int kMaxSide = 32767;

    // Throws PictureError when a side is not within 1 to kMaxSide or memory is out.
    Canvas(PictureSize size, Colour ground);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void FillBox(Box box, double radius, Colour colour);
    void FillGradient(Box box, double radius, Colour top, Colour bottom);
    void OutlineBox(Box box, double radius, double width, Colour colour);

    // A soft shadow around a box that is drawn over it afterwards.
    void Shadow(Box box, double radius, double reach);

    // The whole picture into the box, with round corners.
    void DrawPicture(const Picture& picture, Box box, double radius);

    // One line, centred in the box's height.
    void DrawText(std::string_view text, Box box, const TextStyle& style);
    double TextWidth(std::string_view text, const TextStyle& style) const;

    void FillTriangle(Box box, Colour colour);  // pointing right, as on a button that plays
    void FillNote(Box box, Colour colour);      // a quaver

    // Written beside the target under a temporary name, then renamed: the target is whole or as before. Of a link the
    // file that it names is replaced. Throws PictureError, also when something else than a file stands there.
    void SavePng(const std::string& path) const;

private:
    struct Surface;
    std::unique_ptr<Surface> m_surface;
};

}  // namespace qfc::host
