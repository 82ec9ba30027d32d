#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace qfc::host {

// The outline of a sound of unknown length in bounded memory: lowest and highest sample and the energy of equal
// stretches of time. Samples are added in their order. One thread at a time.
class SoundEnvelope {
public:
    struct Stretch {
        float low = 0;
        float high = 0;
        float energy = 0;  // mean of the squares
    };

    // Interleaved samples of -1 to 1 of whole moments; what is no number counts as silence.
    void Add(std::span<const float> samples, int channels);

    std::size_t Moments() const { return m_moments; }

    // The outline in `columns` equal parts; a sound shorter than that repeats its stretches. Empty without samples.
    std::vector<Stretch> Columns(std::size_t columns) const;

private:
    struct Bucket {
        float low = 0;
        float high = 0;
        double squares = 0;
        std::size_t samples = 0;
        void Take(const Bucket& other);
    };

    void Halve();

    std::vector<Bucket> m_buckets;
    std::size_t m_momentsPerBucket = 1;
    std::size_t m_moments = 0;
};

}  // namespace qfc::host
