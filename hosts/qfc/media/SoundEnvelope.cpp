#include "hosts/qfc/media/SoundEnvelope.h"

#include <algorithm>
#include <cmath>

namespace qfc::host {

namespace {

constexpr std::size_t kMaxBuckets = 4096;

}  // namespace

void SoundEnvelope::Bucket::Take(const Bucket& other) {
    if (other.samples == 0) return;
    low = samples == 0 ? other.low : std::min(low, other.low);
    high = samples == 0 ? other.high : std::max(high, other.high);
    squares += other.squares;
    samples += other.samples;
}

void SoundEnvelope::Halve() {
    for (std::size_t i = 0; i < m_buckets.size() / 2; ++i) {
        Bucket pair = m_buckets[2 * i];
        pair.Take(m_buckets[2 * i + 1]);
        m_buckets[i] = pair;
    }
    m_buckets.resize(m_buckets.size() / 2);
    m_momentsPerBucket *= 2;
}

void SoundEnvelope::Add(std::span<const float> samples, int channels) {
    if (channels < 1) return;
    const std::size_t width = static_cast<std::size_t>(channels);
    for (std::size_t at = 0; at + width <= samples.size(); at += width, ++m_moments) {
        if (m_moments / m_momentsPerBucket == kMaxBuckets) Halve();
        const std::size_t bucket = m_moments / m_momentsPerBucket;
        if (bucket == m_buckets.size()) m_buckets.emplace_back();
        for (const float raw : samples.subspan(at, width)) {
            const float sample = std::isfinite(raw) ? std::clamp(raw, -1.0f, 1.0f) : 0.0f;
            m_buckets[bucket].Take({sample, sample, double{sample} * sample, 1});
        }
    }
}

std::vector<SoundEnvelope::Stretch> SoundEnvelope::Columns(std::size_t columns) const {
    std::vector<Stretch> result;
    if (m_buckets.empty()) return result;
    result.reserve(columns);
    for (std::size_t i = 0; i < columns; ++i) {
        const std::size_t first = i * m_buckets.size() / columns;
        const std::size_t last = std::max(first + 1, (i + 1) * m_buckets.size() / columns);
        Bucket all;
        for (std::size_t b = first; b < last; ++b) all.Take(m_buckets[b]);
        const double samples = static_cast<double>(std::max<std::size_t>(1, all.samples));
        result.push_back({all.low, all.high, static_cast<float>(all.squares / samples)});
    }
    return result;
}

}  // namespace qfc::host
