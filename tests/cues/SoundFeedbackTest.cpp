#include "cues/SoundFeedback.h"

#include "SoundDevice.h"
#include "support/ManualScheduler.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace kestrant::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Heard = std::vector<std::string>;

/// Six sound files, each saying its cue's number, and a device to hear them on.
struct SoundFeedbackTest : testing::Test {
    SoundFeedbackTest() {
        for (int cue = 0; cue < 6; ++cue)
            write(static_cast<Cue>(cue), QByteArray::number(cue));
    }

    [[nodiscard]] QString path(Cue cue) const {
        return folder.filePath(SoundFeedback::resourceName(cue) + QStringLiteral(".mp3"));
    }
    void write(Cue cue, const QByteArray& text) const {
        QFile file(path(cue));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    void prepare() {
        sounds->prepare();
        queue.runPosted();
    }
    Heard play(const std::vector<Cue>& cues) {
        for (const Cue cue : cues)
            sounds->play(cue);
        queue.runPosted();
        return device.takeHeard();
    }

    QTemporaryDir folder;
    ManualScheduler queue{Instant()};
    SoundDevice device;
    std::unique_ptr<SoundFeedback> sounds =
        std::make_unique<SoundFeedback>(std::make_unique<DeviceOutput>(device), queue, queue, folder.path());
};

TEST_F(SoundFeedbackTest, PlaysEachCueFromItsOwnFileAtTheCommonVolume) {
    prepare();
    EXPECT_EQ(play({Cue::dragStart, Cue::expand, Cue::collapse, Cue::drop, Cue::snap, Cue::focus}),
              (Heard{"0", "1", "2", "3", "4", "5"}));
    EXPECT_THAT(device.volumes, Each(SoundFeedback::volume));
}

TEST_F(SoundFeedbackTest, IsPreparedOnceAndSilentBefore) {
    EXPECT_THAT(play({Cue::snap}), IsEmpty());
    prepare();
    prepare();
    EXPECT_EQ(device.starts, 1);
    EXPECT_THAT(play({Cue::snap}), ElementsAre("4"));
}

TEST_F(SoundFeedbackTest, SkipsTheCuesWhoseFilesAreMissingOrDamaged) {
    QFile::remove(path(Cue::expand));
    write(Cue::drop, "damaged");
    prepare();
    EXPECT_EQ(play({Cue::dragStart, Cue::expand, Cue::drop, Cue::snap}), (Heard{"0", "4"}));
}

TEST_F(SoundFeedbackTest, LeavesTheDeviceAloneWhenThereIsNothingToPlay) {
    for (int cue = 0; cue < 6; ++cue)
        QFile::remove(path(static_cast<Cue>(cue)));
    prepare();
    EXPECT_THAT(play({Cue::expand}), IsEmpty());
    EXPECT_EQ(device.starts, 0);
}

TEST_F(SoundFeedbackTest, ACueOverlapsItselfUntilAllItsPlayersAreBusy) {
    prepare();
    EXPECT_EQ(play({Cue::snap, Cue::snap, Cue::snap, Cue::snap, Cue::drop}), (Heard{"4", "4", "4", "3"}));
    EXPECT_THAT(play({Cue::snap}), IsEmpty());
    device.finish(1);
    EXPECT_EQ(play({Cue::snap, Cue::snap}), (Heard{"4"}));
}

TEST_F(SoundFeedbackTest, TheEndOfAnEarlierPlaybackDoesNotFreeThePlayerOfALaterOne) {
    prepare();
    play({Cue::snap, Cue::snap, Cue::snap});
    const auto late = std::exchange(device.playing, {});
    // The device was exchanged: every player is free, and busy again with something newer.
    device.changed();
    EXPECT_EQ(play({Cue::snap, Cue::snap, Cue::snap}), (Heard{"4", "4", "4"}));
    for (const auto& playback : late)
        playback.completed();
    EXPECT_THAT(play({Cue::snap}), IsEmpty());
    device.finishAll();
    EXPECT_EQ(play({Cue::snap}), (Heard{"4"}));
}

TEST_F(SoundFeedbackTest, PlaysOnTheDeviceThatTakesThePlaceOfALostOne) {
    prepare();
    device.isThere = false;
    device.changed();
    EXPECT_THAT(play({Cue::expand}), IsEmpty());
    device.isThere = true;
    queue.advance(SoundFeedback::deviceRetryInterval);
    EXPECT_EQ(play({Cue::collapse}), (Heard{"2"}));
}

TEST_F(SoundFeedbackTest, PlaysTheCueThatFindsTheDeviceExchanged) {
    prepare();
    // While nothing played, so that nobody was told.
    device.number = 2;
    EXPECT_EQ(play({Cue::drop}), (Heard{"3"}));
}

TEST_F(SoundFeedbackTest, LooksForAMissingDeviceOnlyNowAndThen) {
    device.isThere = false;
    prepare();
    for (int count = 0; count < 10; ++count)
        play({Cue::snap});
    EXPECT_EQ(device.starts, 1);
    queue.advance(SoundFeedback::deviceRetryInterval);
    play({Cue::snap});
    EXPECT_EQ(device.starts, 2);
}

TEST_F(SoundFeedbackTest, NeverPlaysLate) {
    prepare();
    struct Case {
        milliseconds waited;
        Heard heard;
    };
    for (const Case& one : {Case{milliseconds(200), {"1"}}, Case{milliseconds(201), {}}}) {
        sounds->play(Cue::expand);
        queue.jumpWall(one.waited);
        queue.runPosted();
        EXPECT_EQ(device.takeHeard(), one.heard);
        device.finishAll();
    }
}

TEST_F(SoundFeedbackTest, ClosesTheDeviceOnTheQueueAndDropsWhatIsStillToBePlayed) {
    prepare();
    sounds->play(Cue::expand);
    sounds.reset();
    EXPECT_FALSE(device.isClosed);
    queue.runPosted();
    EXPECT_TRUE(device.isClosed);
}

TEST(BuiltInSounds, AreThereForEveryCue) {
    for (int cue = 0; cue < 6; ++cue) {
        const QString name = SoundFeedback::resourceName(static_cast<Cue>(cue));
        EXPECT_GT(
            QFile(QString::fromLatin1(SoundFeedback::builtInSounds) + u'/' + name + QStringLiteral(".mp3"))
                .size(),
            0)
            << qPrintable(name);
    }
}

}  // namespace
}  // namespace kestrant::test
