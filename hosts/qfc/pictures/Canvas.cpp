#include "hosts/qfc/pictures/Canvas.h"

#include "hosts/qfc/OutputFile.h"

#include <algorithm>
#include <cairo.h>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <numbers>
#include <pango/pangocairo.h>
#include <random>

namespace qfc::host {

namespace {

struct Release {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    void operator()(cairo_pattern_t* pattern) const noexcept { cairo_pattern_destroy(pattern); }
    void operator()(PangoLayout* layout) const noexcept { g_object_unref(layout); }
    void operator()(PangoContext* context) const noexcept { g_object_unref(context); }
    void operator()(PangoFontMap* fonts) const noexcept { g_object_unref(fonts); }
    void operator()(PangoFont* font) const noexcept { g_object_unref(font); }
    void operator()(PangoFontDescription* font) const noexcept { pango_font_description_free(font); }
    void operator()(char* text) const noexcept { g_free(text); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, Release>;
using ContextPtr = std::unique_ptr<cairo_t, Release>;
using PatternPtr = std::unique_ptr<cairo_pattern_t, Release>;
using LayoutPtr = std::unique_ptr<PangoLayout, Release>;
using LayoutContextPtr = std::unique_ptr<PangoContext, Release>;
using FontMapPtr = std::unique_ptr<PangoFontMap, Release>;
using FontPtr = std::unique_ptr<PangoFont, Release>;
using FontDescriptionPtr = std::unique_ptr<PangoFontDescription, Release>;
using GText = std::unique_ptr<char, Release>;

double Part(Colour colour, unsigned shift) { return (colour.rgb >> shift & 0xFF) / 255.0; }

void SetColour(cairo_t* context, Colour colour) {
    cairo_set_source_rgba(context, Part(colour, 16), Part(colour, 8), Part(colour, 0), colour.opacity);
}

void RoundedPath(cairo_t* context, Box box, double radius) {
    constexpr double kQuarter = std::numbers::pi / 2;
    radius = std::min({radius, box.width / 2, box.height / 2});
    cairo_new_path(context);
    if (radius <= 0) return cairo_rectangle(context, box.x, box.y, box.width, box.height);
    const double right = box.x + box.width - radius;
    const double bottom = box.y + box.height - radius;
    cairo_arc(context, right, box.y + radius, radius, -kQuarter, 0);
    cairo_arc(context, right, bottom, radius, 0, kQuarter);
    cairo_arc(context, box.x + radius, bottom, radius, kQuarter, 2 * kQuarter);
    cairo_arc(context, box.x + radius, box.y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(context);
}

// Without any font pango draws boxes for letters; cairo has plain letters of its own.
bool HasFonts(PangoFontMap* fonts, PangoContext* layouts) {
    const FontDescriptionPtr wanted(pango_font_description_from_string("Sans"));
    const FontPtr font(pango_font_map_load_font(fonts, layouts, wanted.get()));
    return font && pango_font_has_char(font.get(), 'a');
}

GText ValidUtf8(std::string_view text) {
    return GText(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

// Cairo's own letters go no further than ASCII.
std::string AsAscii(std::string_view text) {
    constexpr std::string_view kTimes = "\u00d7";
    std::string ascii;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80) ascii += byte < 0x20 ? ' ' : text[i];
        if (byte >= 0xC0) ascii += text.substr(i, kTimes.size()) == kTimes ? 'x' : '?';
    }
    return ascii;
}

SurfacePtr SurfaceOf(const Picture& picture) {
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, picture.width, picture.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw PictureError(cairo_status_to_string(cairo_surface_status(surface.get())));
    unsigned char* rows = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < picture.height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(rows + std::ptrdiff_t{y} * stride);
        std::copy_n(&picture.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width)],
                    picture.width, row);
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

}  // namespace

struct Canvas::Surface {
    SurfacePtr surface;
    ContextPtr context;
    // The canvas's own: the map that pango shares is never released.
    FontMapPtr fonts{pango_cairo_font_map_new()};
    LayoutContextPtr layouts{pango_font_map_create_context(fonts.get())};
    bool hasFonts = HasFonts(fonts.get(), layouts.get());

    LayoutPtr Layout(std::string_view text, const TextStyle& style) const {
        LayoutPtr layout(pango_layout_new(layouts.get()));
        const FontDescriptionPtr font(pango_font_description_from_string("Sans"));
        pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
        pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
        pango_layout_set_font_description(layout.get(), font.get());
        pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
        pango_layout_set_text(layout.get(), ValidUtf8(text).get(), -1);
        return layout;
    }

    void ChooseBuiltInLetters(const TextStyle& style) const {
        cairo_select_font_face(context.get(), "@cairo:sans", CAIRO_FONT_SLANT_NORMAL,
                               style.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(context.get(), style.size);
    }

    double BuiltInWidth(const std::string& text) const {
        cairo_text_extents_t extents{};
        cairo_text_extents(context.get(), text.c_str(), &extents);
        return extents.x_advance;
    }

    void DrawBuiltIn(std::string_view text, Box box, const TextStyle& style) const {
        ChooseBuiltInLetters(style);
        std::string shown = AsAscii(text);
        while (!shown.empty() && BuiltInWidth(shown) > box.width) shown.pop_back();
        const double rest = box.width - BuiltInWidth(shown);
        const double x = style.align == Align::Left ? 0 : style.align == Align::Centre ? rest / 2 : rest;
        cairo_move_to(context.get(), box.x + x, box.y + box.height / 2 + style.size * 0.35);
        cairo_show_text(context.get(), shown.c_str());
    }
};

Canvas::Canvas(PictureSize size, Colour ground) : m_surface(std::make_unique<Surface>()) {
    if (size.width < 1 || size.height < 1 || size.width > kMaxSide || size.height > kMaxSide)
        throw PictureError(fmt::format("a picture of {} x {} pixels is too large: no side may be over {}", size.width,
                                       size.height, kMaxSide));
    m_surface->surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, size.width, size.height));
    const cairo_status_t status = cairo_surface_status(m_surface->surface.get());
    if (status != CAIRO_STATUS_SUCCESS)
        throw PictureError(fmt::format("a picture of {} x {} pixels cannot be made: {}", size.width, size.height,
                                       cairo_status_to_string(status)));
    m_surface->context.reset(cairo_create(m_surface->surface.get()));
    pango_cairo_update_context(m_surface->context.get(), m_surface->layouts.get());
    SetColour(m_surface->context.get(), ground);
    cairo_paint(m_surface->context.get());
}

Canvas::~Canvas() = default;

void Canvas::FillBox(Box box, double radius, Colour colour) {
    cairo_t* context = m_surface->context.get();
    RoundedPath(context, box, radius);
    SetColour(context, colour);
    cairo_fill(context);
}

void Canvas::FillGradient(Box box, double radius, Colour top, Colour bottom) {
    cairo_t* context = m_surface->context.get();
    const PatternPtr pattern(cairo_pattern_create_linear(0, box.y, 0, box.y + box.height));
    cairo_pattern_add_color_stop_rgba(pattern.get(), 0, Part(top, 16), Part(top, 8), Part(top, 0), top.opacity);
    cairo_pattern_add_color_stop_rgba(pattern.get(), 1, Part(bottom, 16), Part(bottom, 8), Part(bottom, 0),
                                      bottom.opacity);
    RoundedPath(context, box, radius);
    cairo_set_source(context, pattern.get());
    cairo_fill(context);
}

void Canvas::OutlineBox(Box box, double radius, double width, Colour colour) {
    cairo_t* context = m_surface->context.get();
    RoundedPath(context, box.Shrunk(width / 2), radius);
    SetColour(context, colour);
    cairo_set_line_width(context, width);
    cairo_stroke(context);
}

void Canvas::Shadow(Box box, double radius, double reach) {
    const int rings = static_cast<int>(reach);
    for (int i = 0; i < rings; ++i) {
        Box ring = box.Shrunk(i - reach);
        ring.y += reach / 3;
        FillBox(ring, radius + reach - i, {0x000000, 0.32 / reach});
    }
}

void Canvas::DrawPicture(const Picture& picture, Box box, double radius) {
    if (picture.IsEmpty()) return;
    cairo_t* context = m_surface->context.get();
    const SurfacePtr source = SurfaceOf(picture);
    cairo_save(context);
    RoundedPath(context, box, radius);
    cairo_clip(context);
    cairo_translate(context, box.x, box.y);
    cairo_scale(context, box.width / picture.width, box.height / picture.height);
    cairo_set_source_surface(context, source.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_paint(context);
    cairo_restore(context);
}

void Canvas::DrawText(std::string_view text, Box box, const TextStyle& style) {
    cairo_t* context = m_surface->context.get();
    SetColour(context, style.colour);
    if (!m_surface->hasFonts) return m_surface->DrawBuiltIn(text, box, style);
    const LayoutPtr layout = m_surface->Layout(text, style);
    pango_layout_set_width(layout.get(), static_cast<int>(box.width * PANGO_SCALE));
    constexpr PangoEllipsizeMode kCut[] = {PANGO_ELLIPSIZE_MIDDLE, PANGO_ELLIPSIZE_END, PANGO_ELLIPSIZE_START};
    pango_layout_set_ellipsize(layout.get(), kCut[static_cast<int>(style.cut)]);
    constexpr PangoAlignment kAlign[] = {PANGO_ALIGN_LEFT, PANGO_ALIGN_CENTER, PANGO_ALIGN_RIGHT};
    pango_layout_set_alignment(layout.get(), kAlign[static_cast<int>(style.align)]);
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(layout.get(), &width, &height);
    cairo_move_to(context, box.x, box.y + (box.height - height) / 2);
    pango_cairo_show_layout(context, layout.get());
}

double Canvas::TextWidth(std::string_view text, const TextStyle& style) const {
    if (!m_surface->hasFonts) {
        m_surface->ChooseBuiltInLetters(style);
        return m_surface->BuiltInWidth(AsAscii(text));
    }
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(m_surface->Layout(text, style).get(), &width, &height);
    return width;
}

void Canvas::FillTriangle(Box box, Colour colour) {
    cairo_t* context = m_surface->context.get();
    cairo_new_path(context);
    cairo_move_to(context, box.x, box.y);
    cairo_line_to(context, box.x + box.width, box.y + box.height / 2);
    cairo_line_to(context, box.x, box.y + box.height);
    cairo_close_path(context);
    SetColour(context, colour);
    cairo_fill(context);
}

void Canvas::FillNote(Box box, Colour colour) {
    cairo_t* context = m_surface->context.get();
    const double head = box.width * 0.3;
    const double stem = box.x + 2 * head;
    cairo_new_path(context);
    cairo_arc(context, box.x + head, box.y + box.height - head, head, 0, 2 * std::numbers::pi);
    SetColour(context, colour);
    cairo_fill(context);
    cairo_move_to(context, stem - 0.6, box.y + box.height - head);
    cairo_line_to(context, stem - 0.6, box.y);
    cairo_line_to(context, box.x + box.width, box.y + box.height * 0.32);
    cairo_set_line_width(context, 1.3);
    cairo_stroke(context);
}

void Canvas::SavePng(const std::string& path) const {
    const auto target = FileToReplace(path);
    if (!target) throw PictureError(fmt::format("cannot write {}: not a regular file", path));
    const std::string temporary = fmt::format("{}.{:08x}.tmp", target->string(), std::random_device{}());
    const cairo_status_t status = cairo_surface_write_to_png(m_surface->surface.get(), temporary.c_str());
    std::error_code error;
    if (status == CAIRO_STATUS_SUCCESS) std::filesystem::rename(temporary, *target, error);
    if (status == CAIRO_STATUS_SUCCESS && !error) return;
    const std::string reason = error ? error.message() : cairo_status_to_string(status);
    std::filesystem::remove(temporary, error);
    throw PictureError(fmt::format("cannot write {}: {}", path, reason));
}

}  // namespace qfc::host
