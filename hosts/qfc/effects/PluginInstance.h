#pragma once

#include "hosts/qfc/effects/FrameBuffer.h"
#include "hosts/qfc/effects/PluginFile.h"
#include "hosts/qfc/pictures/Picture.h"

namespace qfc::host {

// One running effect of a plugin. Pictures go in and come out with the components where its colour model has them;
// what comes out keeps its transparency in the highest byte of each pixel, not multiplied into the colours
// (Flattened). Borrows the plugin. One thread.
class PluginInstance {
public:
    // Sides that are multiples of 8. Throws PluginError when the plugin makes none, std::invalid_argument for others.
    PluginInstance(const PluginFile& plugin, int colourModel, PictureSize size);
    ~PluginInstance();
    PluginInstance(const PluginInstance&) = delete;
    PluginInstance& operator=(const PluginInstance&) = delete;

    // Numbers that are not finite are read as 0.
    ParameterValue Parameter(int index, std::uint8_t type) const;
    void SetParameter(int index, const ParameterValue& value);

    // Pictures of the instance's size.
    Picture Filtered(double time, const Picture& picture);
    Picture Mixed(double time, const Picture& first, const Picture& second);

private:
    void Fill(FrameBuffer& buffer, const Picture& picture) const;
    void Clear(FrameBuffer& buffer) const;
    Picture Taken(FrameBuffer& buffer) const;
    std::size_t PixelCount() const {
        return static_cast<std::size_t>(m_size.width) * static_cast<std::size_t>(m_size.height);
    }

    const PluginFunctions& m_functions;
    bool m_blueFirst;
    PictureSize m_size;
    FrameBuffer m_first, m_second, m_result;
    f0r_instance_t m_instance = nullptr;
};

}  // namespace qfc::host
