#include "hosts/qfc/effects/ReportBytes.h"
#include "hosts/qfc/effects/ReportMark.h"

#include <bit>
#include <concepts>
#include <type_traits>

namespace qfc::host {

namespace {

class Packer {
public:
    template <std::integral Number>
    void Put(Number number) {
        const auto bits = static_cast<std::make_unsigned_t<Number>>(number);
        for (std::size_t i = 0; i < sizeof bits; ++i)
            m_bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(bits) >> (8 * i)));
    }
    void Put(bool yes) { m_bytes.push_back(yes ? 1 : 0); }
    void Put(float number) { Put(std::bit_cast<std::uint32_t>(number)); }
    void Put(double number) { Put(std::bit_cast<std::uint64_t>(number)); }
    void Put(const std::string& text) {
        Put(static_cast<std::uint32_t>(text.size()));
        m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    }
    void Put(const ParameterColour& colour) {
        Put(colour.red);
        Put(colour.green);
        Put(colour.blue);
    }
    void Put(const ParameterPosition& position) {
        Put(position.x);
        Put(position.y);
    }
    void Put(const ParameterValue& value) {
        std::visit([this](const auto& one) { Put(one); }, value);
    }
    void Put(const Picture& picture) {
        for (const std::uint32_t pixel : picture.pixels) {
            Put(static_cast<std::uint8_t>(pixel >> 16));
            Put(static_cast<std::uint8_t>(pixel >> 8));
            Put(static_cast<std::uint8_t>(pixel));
        }
    }
    void Put(const ProbedParameter& parameter) {
        Put(parameter.name);
        Put(parameter.explanation);
        Put(parameter.type);
        Put(parameter.defaultValue);
    }
    void Put(const MovedParameter& moved) {
        Put(moved.index);
        Put(moved.value);
    }
    template <typename Element>
    void Put(const std::vector<Element>& elements) {
        Put(static_cast<std::uint32_t>(elements.size()));
        for (const Element& element : elements) Put(element);
    }
    void Put(const ProbedEffect& effect) {
        Put(effect.isTransition);
        Put(effect.index);
        Put(effect.name);
        Put(effect.author);
        Put(effect.explanation);
        Put(effect.majorVersion);
        Put(effect.minorVersion);
        Put(effect.pluginType);
        Put(effect.colourModel);
        Put(effect.apiVersion);
        Put(effect.parameters);
        Put(effect.pictures);
        Put(effect.dependsOnTime);
        Put(effect.noVisibleEffect);
        Put(effect.moved);
        Put(effect.progressMode);
        Put(effect.progressParameter);
        Put(effect.start);
        Put(effect.end);
        Put(effect.fadedInputs);
    }

    std::vector<std::uint8_t> Take() { return std::move(m_bytes); }

private:
    std::vector<std::uint8_t> m_bytes;
};

}  // namespace

std::vector<std::uint8_t> PackReport(const ProbeReport& report) {
    Packer packer;
    packer.Put(kReportMark);
    packer.Put(static_cast<std::uint8_t>(report.outcome));
    packer.Put(report.reason);
    packer.Put(report.effects);
    packer.Put(kReportMark);
    std::vector<std::uint8_t> bytes = packer.Take();
    if (bytes.size() > kLargestReport) bytes.clear();
    return bytes;
}

}  // namespace qfc::host
