#pragma once

#include "hosts/qfc/pictures/Drawing.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qfc::host {

// Why a picture cannot be drawn or written, as a text for a person.
class PictureError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A drawing in memory that ends as a PNG file. Texts are UTF-8; what is not shows replacement characters, and a system
// without fonts gets plain built-in letters. One thread at a time.
class Canvas : public Drawing {
public:
    // The largest side a canvas can have.
    static constexpr int kMaxSide = 32767;

    // Throws PictureError when a side is not within 1 to kMaxSide or memory is out.
    Canvas(PictureSize size, Colour ground);
    ~Canvas() override;

    void FillBox(Box box, double radius, Colour colour) override;
    void FillGradient(Box box, double radius, Colour top, Colour bottom) override;
    void OutlineBox(Box box, double radius, double width, Colour colour) override;
    void Shadow(Box box, double radius, double reach) override;
    void DrawPicture(const Picture& picture, Box box, double radius) override;
    void DrawText(std::string_view text, Box box, const TextStyle& style) override;
    double TextWidth(std::string_view text, const TextStyle& style) const override;
    void FillTriangle(Box box, Colour colour) override;
    void FillNote(Box box, Colour colour) override;

    // Written beside the target under a temporary name, then renamed: the target is whole or as before. Of a link the
    // file that it names is replaced. Throws PictureError, also when something else than a file stands there.
    void SavePng(const std::string& path) const;

private:
    struct Surface;
    std::unique_ptr<Surface> m_surface;
};

}  // namespace qfc::host
