#include "ui/WithEvents.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kestrant;
using namespace kestrant::test;

namespace {

using CalendarProgram = WithEvents<Program>;

void addOverdue(CalendarProgram& program) {
    program.Program::add(QStringLiteral("Lease"), -1);
}
void addToday(CalendarProgram& program) {
    program.Program::add(QStringLiteral("Plants"), 0, {18, 0});
}
void addSoon(CalendarProgram& program) {
    program.add("Review", 0, {14, 42}, 30);
}

TEST(RestingViewModel, SaysTheMostUrgentThingThatTheSettingsWant) {
    using Add = void (*)(CalendarProgram&);
    constexpr auto addRunning = [](CalendarProgram& program) { program.add("Piano", 0, {14, 0}, 60); };
    constexpr auto addLater = [](CalendarProgram& program) { program.add("Dinner", 0, {14, 46}, 60); };
    struct Case {
        std::vector<Add> facts;
        /// What is said when what comes is wanted, and when everything is.
        const char* whatComes;
        const char* everything;
        bool wide = false;
    };
    for (const Case& each : std::vector<Case>{{{}, "silent", "silent"},
                                              {{addToday}, "silent", "count"},
                                              {{addOverdue}, "overdue", "overdue"},
                                              {{addOverdue, addToday}, "overdue", "overdue"},
                                              {{addSoon}, "event", "event", true},
                                              {{addLater}, "silent", "silent"},
                                              {{addRunning}, "event", "event", true},
                                              {{addOverdue, addToday, addSoon}, "event", "event", true}}) {
        CalendarProgram program;
        for (const Add add : each.facts)
            add(program);
        program.load();
        const RestingViewModel& resting = *program.panel.resting();
        EXPECT_EQ(resting.kind(), QStringLiteral("silent")) << "calm is the default";
        EXPECT_EQ(program.geometry.footprint(NotchPhase::idle), program.geometry.idleSize());
        program.preferences.restingContent.set(RestingContent::everything);
        EXPECT_EQ(resting.kind(), QString::fromUtf8(each.everything));
        program.preferences.restingContent.set(RestingContent::whatComes);
        EXPECT_EQ(resting.kind(), QString::fromUtf8(each.whatComes));
        EXPECT_EQ(program.geometry.footprint(NotchPhase::idle),
                  each.wide ? program.geometry.hoverSize() : program.geometry.idleSize());
    }
}

TEST(RestingViewModel, CountsTheMinutesDown) {
    CalendarProgram program;
    addSoon(program);
    program.load();
    program.preferences.restingContent.set(RestingContent::whatComes);
    RestingViewModel& resting = *program.panel.resting();
    EXPECT_EQ(resting.title(), QStringLiteral("Review"));
    EXPECT_EQ(resting.minutes(), 12);
    program.time.advance(std::chrono::minutes(11));
    program.days.refreshPresent();
    EXPECT_EQ(resting.minutes(), 1);
    program.time.advance(std::chrono::minutes(2));
    program.days.refreshPresent();
    EXPECT_TRUE(resting.hasBegun());
    program.preferences.showCalendar.set(false);
    EXPECT_EQ(resting.kind(), QStringLiteral("silent"));
}

TEST(RestingViewModel, RingsUntilThePersonHasLookedOrItIsDone) {
    for (const bool looks : {true, false}) {
        CalendarProgram program;
        addSoon(program);
        const QString id = program.Program::add(QStringLiteral("Plants"), 0, {18, 0});
        program.load();
        RestingViewModel& resting = *program.panel.resting();
        resting.ring(id);
        EXPECT_EQ(resting.kind(), QStringLiteral("silent")) << "calm is the default";
        program.preferences.pulsesWhenRinging.set(true);
        EXPECT_EQ(resting.kind(), QStringLiteral("ringing"));
        EXPECT_EQ(resting.title(), QStringLiteral("Plants"));
        if (looks) {
            program.interaction.expand();
            program.interaction.collapse(false);
        } else {
            program.database.dropReminder(id);
            program.settle();
        }
        EXPECT_EQ(resting.kind(), QStringLiteral("silent"));
    }
}

TEST(RestingViewModel, RejoicesOnceWhenTheLastOneOfTheDayIsDone) {
    CalendarProgram program;
    const QString id = program.Program::add(QStringLiteral("Plants"), 0, {18, 0});
    program.load();
    program.preferences.restingContent.set(RestingContent::everything);
    program.database.dropReminder(id);
    program.settle();
    RestingViewModel& resting = *program.panel.resting();
    EXPECT_EQ(resting.kind(), QStringLiteral("done"));
    resting.finishDone();
    EXPECT_EQ(resting.kind(), QStringLiteral("silent"));
}

}  // namespace
