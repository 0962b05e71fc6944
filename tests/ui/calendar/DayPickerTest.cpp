#include "ui/calendar/DayPicker.h"

#include "ui/Program.h"

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

TEST(DayPicker, ShowsMonthsFromTheLanguagesFirstDayOfTheWeek) {
    Program program;
    DayPicker picker(program.time, program.currentZone, program.localizer);
    const auto firstShown = [&picker] {
        return picker.days().first().toMap().value(QStringLiteral("iso")).toString();
    };
    EXPECT_EQ(picker.monthTitle(), QStringLiteral("November 2026"));
    EXPECT_EQ(firstShown(), QStringLiteral("2026-11-01"));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(picker.monthTitle(), QStringLiteral("Novembre 2026"));
    EXPECT_EQ(firstShown(), QStringLiteral("2026-10-26"));
    EXPECT_EQ(picker.weekdays().first().toMap().value(QStringLiteral("full")), QStringLiteral("lundi"));
    EXPECT_EQ(picker.days().size(), 42);
}

TEST(DayPicker, NamesTheWeekendAndTheWeekThatAreToCome) {
    Program program;
    DayPicker picker(program.time, program.currentZone, program.localizer);
    struct Case {
        int daysLater;
        const char* weekend;
        const char* nextWeek;
    };
    // From a Saturday on.
    for (const Case& c : {Case{0, "2026-11-28", "2026-11-23"}, Case{1, "2026-11-28", "2026-11-23"},
                          Case{1, "2026-11-28", "2026-11-30"}, Case{4, "2026-11-28", "2026-11-30"},
                          Case{1, "2026-12-05", "2026-11-30"}}) {
        program.time.advance(std::chrono::days(c.daysLater));
        EXPECT_EQ(picker.weekend(), QString::fromUtf8(c.weekend)) << picker.today().toStdString();
        EXPECT_EQ(picker.nextWeek(), QString::fromUtf8(c.nextWeek)) << picker.today().toStdString();
    }
}

TEST(DayPicker, MovesTheDayByKeyboardAndFollowsItWithTheMonth) {
    Program program;
    DayPicker picker(program.time, program.currentZone, program.localizer);
    picker.moveDay(-1, 0);
    EXPECT_EQ(picker.isoDay(), QStringLiteral("2026-11-20"));
    picker.moveDay(14, 0);
    EXPECT_EQ(picker.monthTitle(), QStringLiteral("December 2026"));
    picker.setIsoDay(QStringLiteral("2027-01-31"));
    picker.moveDay(0, 1);
    EXPECT_EQ(picker.isoDay(), QStringLiteral("2027-02-28"));
}

TEST(DayPicker, NamesTheDayWithItsYearWhereThatIsAnother) {
    Program program;
    DayPicker picker(program.time, program.currentZone, program.localizer);
    EXPECT_EQ(picker.text(), QString());
    picker.setIsoDay(QStringLiteral("2026-11-24"));
    EXPECT_EQ(picker.text(), QStringLiteral("Tue 24 Nov"));
    picker.setIsoDay(QStringLiteral("2027-03-01"));
    EXPECT_EQ(picker.text(), QStringLiteral("Mon 1 Mar 2027"));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(picker.text(), QStringLiteral("Lun. 1 mars 2027"));
    picker.setIsoDay(QString());
    EXPECT_EQ(picker.text(), QString());
}

}  // namespace
