#include "platform/linux/audio/SoundFile.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace kestrant {

namespace {

constexpr int longestSeconds = 10;
constexpr int highestSampleRate = 192000;

/// A file in memory as libsndfile reads it.
struct MemoryFile {
    const QByteArray& bytes;
    sf_count_t position = 0;

    static MemoryFile& of(void* file) { return *static_cast<MemoryFile*>(file); }
};

sf_count_t length(void* file) {
    return MemoryFile::of(file).bytes.size();
}

sf_count_t seek(sf_count_t offset, int whence, void* file) {
    MemoryFile& memory = MemoryFile::of(file);
    const sf_count_t base = whence == SEEK_CUR ? memory.position : whence == SEEK_END ? length(file) : 0;
    memory.position = std::clamp<sf_count_t>(base + offset, 0, length(file));
    return memory.position;
}

sf_count_t read(void* target, sf_count_t count, void* file) {
    MemoryFile& memory = MemoryFile::of(file);
    const sf_count_t available = std::clamp<sf_count_t>(length(file) - memory.position, 0, count);
    std::memcpy(target, memory.bytes.constData() + memory.position, static_cast<std::size_t>(available));
    memory.position += available;
    return available;
}

sf_count_t tell(void* file) {
    return MemoryFile::of(file).position;
}

struct Close {
    void operator()(SNDFILE* file) const { sf_close(file); }
};

}  // namespace

std::optional<PcmBuffer> decodeSoundFile(const QByteArray& file) {
    MemoryFile memory{file};
    SF_VIRTUAL_IO access{length, seek, read, nullptr, tell};
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, Close> sound(sf_open_virtual(&access, SFM_READ, &info, &memory));
    if (!sound || info.channels < 1 || info.channels > 2 || info.samplerate < 1 ||
        info.samplerate > highestSampleRate)
        return {};

    // The length in the file's header may be wrong.
    const auto mostFrames = sf_count_t{longestSeconds} * info.samplerate;
    std::vector<float> samples;
    std::vector<float> part(std::size_t{4096} * static_cast<std::size_t>(info.channels));
    sf_count_t frames = 0;
    while (const sf_count_t count = sf_readf_float(sound.get(), part.data(), 4096)) {
        frames += count;
        if (frames > mostFrames)
            return {};
        samples.insert(samples.end(), part.begin(), part.begin() + count * info.channels);
    }
    if (samples.empty() || sf_error(sound.get()) != SF_ERR_NO_ERROR)
        return {};

    PcmBuffer buffer{.sampleRate = info.samplerate, .channelCount = info.channels};
    buffer.samples.reserve(samples.size());
    for (const float sample : samples)
        buffer.samples.push_back(static_cast<std::int16_t>(
            std::lround(std::clamp(sample, -1.0F, 1.0F) * float{std::numeric_limits<std::int16_t>::max()})));
    return buffer;
}

}  // namespace kestrant
