#include "platform/linux/audio/SoundFile.h"

#include "cues/SoundFeedback.h"

#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace kestrant::test {
namespace {

QByteArray builtIn(Cue cue) {
    QFile file(QString::fromLatin1(SoundFeedback::builtInSounds) + u'/' + SoundFeedback::resourceName(cue) +
               QStringLiteral(".mp3"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// A wave file in which every sample is a quarter of full scale.
QByteArray wave(quint16 channels, quint32 sampleRate, quint32 frames) {
    QByteArray file;
    const auto add = [&file](auto value) {
        const auto little = qToLittleEndian(value);
        file.append(reinterpret_cast<const char*>(&little), sizeof little);
    };
    const quint32 size = frames * channels * 2;
    file += "RIFF";
    add(36 + size);
    file += "WAVEfmt ";
    add(quint32{16});
    add(quint16{1});
    add(channels);
    add(sampleRate);
    add(sampleRate * channels * 2);
    add(static_cast<quint16>(channels * 2));
    add(quint16{16});
    file += "data";
    add(size);
    for (quint32 sample = 0; sample < frames * channels; ++sample)
        add(quint16{0x2000});
    return file;
}

TEST(SoundFile, TheProgramsOwnSoundsBeginAtOnceAndAreShortAndQuiet) {
    for (int index = 0; index < 6; ++index) {
        const auto sound = decodeSoundFile(builtIn(static_cast<Cue>(index)));
        ASSERT_TRUE(sound) << index;
        EXPECT_EQ(sound->channelCount, 1) << index;
        const auto& samples = sound->samples;
        const double seconds = double(samples.size()) / sound->sampleRate;
        EXPECT_LT(seconds, 0.3) << index;
        const auto begin = std::find_if(samples.begin(), samples.end(),
                                        [](std::int16_t sample) { return std::abs(sample) > 300; });
        EXPECT_LT(double(begin - samples.begin()) / sound->sampleRate, 0.005) << index;
        const auto [least, most] = std::minmax_element(samples.begin(), samples.end());
        EXPECT_LT(std::max<int>(*most, -*least), 32767 / 3) << index;
    }
}

TEST(SoundFile, KeepsRateAndChannels) {
    EXPECT_EQ(decodeSoundFile(wave(2, 48000, 100)),
              (PcmBuffer{48000, 2, std::vector<std::int16_t>(200, 0x2000)}));
    EXPECT_EQ(decodeSoundFile(wave(1, 8000, 80000)),
              (PcmBuffer{8000, 1, std::vector<std::int16_t>(80000, 0x2000)}));
}

TEST(SoundFile, RefusesWhatIsNoShortSound) {
    const QByteArray good = builtIn(Cue::expand);
    const std::vector<std::pair<const char*, QByteArray>> files{
        {"nothing", {}},
        {"a text", QByteArray("<svg/>").repeated(1000)},
        {"zeros", QByteArray(4000, '\0')},
        {"the first bytes of a sound", good.first(40)},
        {"three channels", wave(3, 44100, 100)},
        {"a wave without samples", wave(1, 44100, 0)},
        {"longer than ten seconds", wave(1, 8000, 80001)},
    };
    for (const auto& [name, file] : files)
        EXPECT_FALSE(decodeSoundFile(file)) << name;
}

TEST(SoundFile, SurvivesWhateverIsDamaged) {
    const QByteArray good = builtIn(Cue::snap);
    const auto half = decodeSoundFile(good.first(good.size() / 2));
    EXPECT_TRUE(!half || !half->samples.empty());
    for (qsizetype at = 0; at < good.size(); at += 7) {
        QByteArray damaged = good;
        damaged[at] = static_cast<char>(~damaged.at(at));
        const auto sound = decodeSoundFile(damaged);
        EXPECT_TRUE(!sound || !sound->samples.empty()) << at;
    }
}

}  // namespace
}  // namespace kestrant::test
