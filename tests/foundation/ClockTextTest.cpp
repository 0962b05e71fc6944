#include "foundation/ClockText.h"

#include <gtest/gtest.h>

namespace kestrant {
namespace {

TEST(ClockText, FrenchHasTwentyFourHoursAndEnglishWhatThePersonHas) {
    const QLocale american(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(clockHours(Language::english, american), ClockHours::twelve);
    EXPECT_EQ(clockHours(Language::french, american), ClockHours::twentyFour);
    for (const QLocale& personal : {QLocale(QLocale::English, QLocale::UnitedKingdom),
                                    QLocale(QLocale::German, QLocale::Germany), QLocale::c()})
        EXPECT_EQ(clockHours(Language::english, personal), ClockHours::twentyFour);
}

TEST(ClockText, TellsTheTimeInBothWays) {
    struct Case {
        QTime time;
        const char* twentyFour;
        const char* twelve;
    };
    for (const Case& c : {Case{{0, 5}, "00:05", "12:05 AM"}, Case{{9, 30}, "09:30", "9:30 AM"},
                          Case{{12, 0}, "12:00", "12:00 PM"}, Case{{23, 59}, "23:59", "11:59 PM"}}) {
        EXPECT_EQ(clockText(c.time, ClockHours::twentyFour).toStdString(), c.twentyFour);
        EXPECT_EQ(clockText(c.time, ClockHours::twelve).replace(QChar::Nbsp, u' ').toStdString(), c.twelve);
    }
}

}  // namespace
}  // namespace kestrant
