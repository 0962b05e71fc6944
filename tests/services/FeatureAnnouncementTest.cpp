#include "services/FeatureAnnouncement.h"

#include "preferences/Preferences.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

using namespace kestrant;
using namespace std::chrono_literals;

namespace {

constexpr Instant released{std::chrono::seconds(1'795'000'000)};

struct Person {
    explicit Person(Duration sinceRelease) : time(released + sinceRelease) {}
    /// Starts the program and opens the panel; whether the announcement came.
    bool isTold() {
        announcement.noteStart();
        const bool isDue = announcement.isDue();
        if (isDue)
            announcement.notePresented();
        return isDue;
    }

    ManualScheduler time;
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(); }};
    FeatureAnnouncement announcement{preferences, time, released};
};

TEST(FeatureAnnouncement, IsForInstallationsOlderThanTheFeatureAlone) {
    for (const auto& [installed, isTold] : {std::pair(-48h, true), {-1h, true}, {0h, false}, {72h, false}}) {
        Person person(installed);
        EXPECT_FALSE(person.isTold()) << "just installed";
        EXPECT_DOUBLE_EQ(person.preferences.announcementInstallationDate(),
                         secondsSinceReferenceDate(released + installed));
        person.time.advance(240h);
        EXPECT_EQ(person.isTold(), isTold);
    }
    Person before(1h);
    before.preferences.completedInitialOnboarding.set(true);
    EXPECT_TRUE(before.isTold()) << "installed before that was noted";
}

TEST(FeatureAnnouncement, ComesThreeTimesOnDaysOfTheirOwnUntilItWasSeen) {
    enum class Answer { none, seen, never };
    for (const auto& [answer, times] : {std::pair(Answer::none, 3), {Answer::seen, 1}, {Answer::never, 1}}) {
        Person person(-48h);
        (void)person.isTold();
        person.time.advance(50h);
        int told = 0;
        for (int start = 0; start < 40; ++start) {
            if (person.isTold()) {
                ++told;
                if (answer == Answer::seen)
                    person.announcement.noteSeen();
                else if (answer == Answer::never)
                    person.announcement.disable();
            }
            EXPECT_FALSE(person.isTold()) << "twice on one day";
            person.time.advance(24h);
        }
        EXPECT_EQ(told, times);
        FeatureAnnouncement next(person.preferences, person.time, person.time.now() - 1h);
        EXPECT_EQ(next.isDue(), answer != Answer::never) << "a later feature is another one";
    }
}

}  // namespace
