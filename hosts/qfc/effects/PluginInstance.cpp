#include "hosts/qfc/effects/PluginInstance.h"

#include "hosts/qfc/effects/PluginTexts.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace qfc::host {

namespace {

constexpr int kFrameSideUnit = 8;

// The interface orders components by their place in memory, whatever the machine.
void PutPixel(std::uint8_t* to, std::uint32_t pixel, bool blueFirst) {
    const auto red = static_cast<std::uint8_t>(pixel >> 16);
    const auto blue = static_cast<std::uint8_t>(pixel);
    to[0] = blueFirst ? blue : red;
    to[1] = static_cast<std::uint8_t>(pixel >> 8);
    to[2] = blueFirst ? red : blue;
    to[3] = static_cast<std::uint8_t>(pixel >> 24);
}

std::uint32_t GetPixel(const std::uint8_t* from, bool blueFirst) {
    const std::uint32_t red = from[blueFirst ? 2 : 0];
    const std::uint32_t blue = from[blueFirst ? 0 : 2];
    return static_cast<std::uint32_t>(from[3]) << 24 | red << 16 | static_cast<std::uint32_t>(from[1]) << 8 | blue;
}

std::size_t CheckedPixels(PictureSize size) {
    if (size.width <= 0 || size.height <= 0 || size.width % kFrameSideUnit != 0 || size.height % kFrameSideUnit != 0)
        throw std::invalid_argument("frames have sides that are multiples of 8");
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

double Finite(double number) { return std::isfinite(number) ? number : 0; }
float Finite(float number) { return std::isfinite(number) ? number : 0; }

// Larger than any value, for plugins that write more than theirs.
union AnyParameter {
    f0r_param_bool yes;
    f0r_param_double number;
    f0r_param_color_t colour;
    f0r_param_position_t position;
    f0r_param_string text;
    std::uint8_t bytes[64];
};

struct Setter {
    AnyParameter& to;
    // Outlives the call: the interface takes texts as pointers that may be written through.
    std::string& text;

    void operator()(bool yes) const { to.yes = yes ? 1.0 : 0.0; }
    void operator()(double number) const { to.number = number; }
    void operator()(const ParameterColour& colour) const { to.colour = {colour.red, colour.green, colour.blue}; }
    void operator()(const ParameterPosition& position) const { to.position = {position.x, position.y}; }
    void operator()(const std::string& value) const {
        text = value;
        to.text = text.data();
    }
};

}  // namespace

PluginInstance::PluginInstance(const PluginFile& plugin, int colourModel, PictureSize size)
    : m_functions(plugin.Functions()),
      m_blueFirst(colourModel == F0R_COLOR_MODEL_BGRA8888),
      m_size(size),
      m_first(CheckedPixels(size)),
      m_second(CheckedPixels(size)),
      m_result(CheckedPixels(size)) {
    m_instance = m_functions.construct(static_cast<unsigned int>(size.width), static_cast<unsigned int>(size.height));
    if (!m_instance) throw PluginError("it makes no instance");
}

PluginInstance::~PluginInstance() { m_functions.destruct(m_instance); }

ParameterValue PluginInstance::Parameter(int index, std::uint8_t type) const {
    AnyParameter value;
    std::memset(&value, 0, sizeof value);
    m_functions.getParameter(m_instance, &value, index);
    switch (type) {
        case parameter_type::kSwitch:
            return value.yes >= 0.5;
        case parameter_type::kColour:
            return ParameterColour{Finite(value.colour.r), Finite(value.colour.g), Finite(value.colour.b)};
        case parameter_type::kPosition:
            return ParameterPosition{Finite(value.position.x), Finite(value.position.y)};
        case parameter_type::kText:
            return CleanPluginText(value.text);
        default:
            return Finite(value.number);
    }
}

void PluginInstance::SetParameter(int index, const ParameterValue& value) {
    AnyParameter raw;
    std::memset(&raw, 0, sizeof raw);
    std::string text;
    std::visit(Setter{raw, text}, value);
    m_functions.setParameter(m_instance, &raw, index);
}

Picture PluginInstance::Filtered(double time, const Picture& picture) {
    Fill(m_first, picture);
    Clear(m_result);
    if (m_functions.update) {
        m_functions.update(m_instance, time, m_first.Pixels(), m_result.Pixels());
    } else {
        m_functions.update2(m_instance, time, m_first.Pixels(), nullptr, nullptr, m_result.Pixels());
    }
    return Taken(m_result);
}

Picture PluginInstance::Mixed(double time, const Picture& first, const Picture& second) {
    Fill(m_first, first);
    Fill(m_second, second);
    Clear(m_result);
    m_functions.update2(m_instance, time, m_first.Pixels(), m_second.Pixels(), nullptr, m_result.Pixels());
    return Taken(m_result);
}

void PluginInstance::Fill(FrameBuffer& buffer, const Picture& picture) const {
    if (picture.width != m_size.width || picture.height != m_size.height)
        throw std::invalid_argument("a picture of another size");
    auto* to = reinterpret_cast<std::uint8_t*>(buffer.Pixels());
    for (const std::uint32_t pixel : picture.pixels) {
        PutPixel(to, pixel, m_blueFirst);
        to += sizeof pixel;
    }
}

// Some plugins draw upon what is there, or leave transparency as it is: they mean white paper.
void PluginInstance::Clear(FrameBuffer& buffer) const {
    std::memset(buffer.Pixels(), 0xFF, PixelCount() * sizeof(std::uint32_t));
}

Picture PluginInstance::Taken(FrameBuffer& buffer) const {
    Picture picture(m_size.width, m_size.height);
    const auto* from = reinterpret_cast<const std::uint8_t*>(buffer.Pixels());
    for (std::uint32_t& pixel : picture.pixels) {
        pixel = GetPixel(from, m_blueFirst);
        from += sizeof pixel;
    }
    return picture;
}

}  // namespace qfc::host
