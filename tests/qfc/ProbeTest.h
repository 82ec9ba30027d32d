#pragma once

#include "hosts/qfc/effects/PictureMath.h"
#include "hosts/qfc/effects/ProbeReport.h"
#include "hosts/qfc/effects/SamplePhotographs.h"
#include "tests/qfc/EffectPlugins.h"

#include <fstream>
#include <gtest/gtest.h>

#if defined(__has_feature)
#define QFC_TEST_HAS_FEATURE(x) __has_feature(x)
#else
#define QFC_TEST_HAS_FEATURE(x) 0
#endif

namespace qfc::test {

using Outcome = host::ProbeReport::Outcome;

// Sanitizers take signals for themselves, and take all the addresses there are.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || QFC_TEST_HAS_FEATURE(address_sanitizer) || \
    QFC_TEST_HAS_FEATURE(thread_sanitizer)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

// Plugins, run by the built program.
class ProbeTest : public ::testing::Test {
protected:
    static host::ProbeSettings Settings(std::chrono::milliseconds limit = std::chrono::seconds(30)) {
        return {.program = QFC_PROGRAM, .limit = limit, .stop = nullptr};
    }
    host::ProbeReport Probe(const std::string& plugin) const {
        return host::ProbeFile(m_plugins.Make(plugin), Settings());
    }
    host::ProbeReport ProbeFor(const std::string& plugin, std::chrono::milliseconds limit) const {
        return host::ProbeFile(m_plugins.Make(plugin), Settings(limit));
    }
    // The one effect of a plugin; fails the test when there is another number of them.
    host::ProbedEffect EffectOf(const std::string& plugin) const {
        const host::ProbeReport report = Probe(plugin);
        EXPECT_EQ(report.outcome, Outcome::Effects) << plugin << ": " << report.reason;
        EXPECT_EQ(report.effects.size(), 1u) << plugin;
        return report.effects.size() == 1 ? report.effects[0] : host::ProbedEffect{};
    }
    // Fails the test unless the plugin fails; why.
    std::string Failure(const std::string& plugin) const {
        const host::ProbeReport report = Probe(plugin);
        EXPECT_EQ(report.outcome, Outcome::Failed) << plugin;
        EXPECT_TRUE(report.effects.empty()) << plugin;
        EXPECT_EQ(report.reason.find('\n'), std::string::npos) << plugin;
        return report.reason;
    }

    // Whether a process has the file in its memory.
    static bool IsMappedByAnybody(const std::string& file) {
        for (const auto& process : std::filesystem::directory_iterator("/proc")) {
            std::ifstream maps(process.path() / "maps");
            // A process that ends meanwhile ends the reading, too.
            for (std::string line; std::getline(maps, line);) {
                if (line.find(file) != std::string::npos) return true;
            }
        }
        return false;
    }

    // The middle of a sample photograph, as it is shown.
    static host::Picture Shown(const host::Picture& photograph) {
        const host::PictureSize size{2 * host::kEffectPictureSize.width, 2 * host::kEffectPictureSize.height};
        return host::Halved(
            host::Part(photograph, (photograph.width - size.width) / 2, (photograph.height - size.height) / 2, size));
    }
    static host::SamplePhotographs Photographs() {
        return host::ReadPhotographs(host::PhotographFolder(std::filesystem::canonical(QFC_PROGRAM)));
    }

    EffectPlugins m_plugins;
};

}  // namespace qfc::test
