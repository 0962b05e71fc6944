#include "platform/linux/window/ScrollGestureRecogniser.h"

#include "support/ManualScheduler.h"

#include <gtest/gtest.h>

#include <vector>

namespace kestrant {
namespace {

using Phase = ScrollEvent::Phase;

class ScrollGestureRecogniserTest : public ::testing::Test {
  protected:
    static ScrollSample sample(double deltaY, ScrollDeviceKind kind = ScrollDeviceKind::touchpad,
                               int device = 11) {
        return {device, kind, false, 0.0, deltaY, 15.0, 15.0};
    }
    [[nodiscard]] std::vector<Phase> takePhases() {
        std::vector<Phase> phases;
        for (const ScrollEvent& event : std::exchange(events, {}))
            phases.push_back(event.phase);
        return phases;
    }

    ManualScheduler scheduler{Instant{}};
    std::vector<ScrollEvent> events;
    bool consumes = false;
    ScrollGestureRecogniser recogniser{scheduler, [this](const ScrollEvent& event) {
                                           events.push_back(event);
                                           return consumes;
                                       }};
};

TEST_F(ScrollGestureRecogniserTest, SilenceSeparatesGestures) {
    recogniser.add(sample(1.3));
    scheduler.advance(std::chrono::milliseconds(149));
    recogniser.add(sample(15.0));
    scheduler.advance(std::chrono::milliseconds(149));
    EXPECT_EQ(takePhases(), (std::vector{Phase::began, Phase::changed}));
    scheduler.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(takePhases(), std::vector{Phase::ended});
    recogniser.add(sample(0.7));
    EXPECT_EQ(takePhases(), std::vector{Phase::began});
}

TEST_F(ScrollGestureRecogniserTest, DevicesMakeGesturesOfTheirOwn) {
    recogniser.add(sample(1.3, ScrollDeviceKind::touchpad, 11));
    scheduler.advance(std::chrono::milliseconds(100));
    recogniser.add(sample(1.3, ScrollDeviceKind::touchpad, 12));
    scheduler.advance(std::chrono::milliseconds(50));
    EXPECT_EQ(takePhases(), (std::vector{Phase::began, Phase::began, Phase::ended}));
    recogniser.endAll();
    EXPECT_EQ(takePhases(), std::vector{Phase::ended});
    scheduler.advance(std::chrono::seconds(1));
    EXPECT_TRUE(events.empty());
}

TEST_F(ScrollGestureRecogniserTest, AWheelNeverMakesOne) {
    const ScrollSample wheel[] = {
        sample(15.0, ScrollDeviceKind::wheel),
        sample(1.37, ScrollDeviceKind::wheel),
        sample(15.0, ScrollDeviceKind::unknown),
        sample(-30.0, ScrollDeviceKind::unknown),
        sample(15.0 / 8, ScrollDeviceKind::unknown),
        sample(-15.0 * 11 / 120, ScrollDeviceKind::unknown),
        {11, ScrollDeviceKind::unknown, false, 0.0, 1.0, 1.0, 1.0},
    };
    for (const ScrollSample& click : wheel) {
        EXPECT_FALSE(recogniser.add(click)) << click.deltaY;
        scheduler.advance(std::chrono::milliseconds(20));
    }
    EXPECT_TRUE(events.empty());
}

TEST_F(ScrollGestureRecogniserTest, FingersBehindAnUnknownDeviceMakeOne) {
    recogniser.add({11, ScrollDeviceKind::unknown, false, 0.0, 0.331, 1.0, 1.0});
    EXPECT_EQ(takePhases(), std::vector{Phase::began});
    recogniser.add({11, ScrollDeviceKind::unknown, false, 0.0, 1.0, 1.0, 1.0});
    EXPECT_EQ(takePhases(), std::vector{Phase::changed}) << "even by just a click's worth";
}

TEST_F(ScrollGestureRecogniserTest, DeltasArePointsWithDownNegative) {
    ScrollSample coarse = sample(20.0);
    coarse.deltaX = -4.0;
    coarse.incrementY = 100.0;
    coarse.incrementX = 60.0;
    coarse.naturalScrolling = true;
    recogniser.add(coarse);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_DOUBLE_EQ(events[0].deltaY, -3.0);
    EXPECT_DOUBLE_EQ(events[0].deltaX, 1.0);
    EXPECT_TRUE(events[0].directionInverted);
    EXPECT_TRUE(events[0].hasPreciseDeltas);
    scheduler.advance(std::chrono::seconds(1));
    EXPECT_EQ(events[1].deltaY, 0.0) << "an end moves nothing";
}

TEST_F(ScrollGestureRecogniserTest, TellsWhetherTheEventWasConsumed) {
    EXPECT_FALSE(recogniser.add(sample(1.3)));
    consumes = true;
    EXPECT_TRUE(recogniser.add(sample(1.3)));
    EXPECT_FALSE(recogniser.add(sample(0.0))) << "nothing moved";
}

}  // namespace
}  // namespace kestrant
