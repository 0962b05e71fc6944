#include "eventkit/recurrence/OccurrenceIterator.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using icalendar::DateKind;
using icalendar::LocalTime;
using icalendar::OccurrenceIterator;
using icalendar::RecurrenceRule;

const TimeZone paris{*TimeZone::named("Europe/Paris")};

LocalTime timeFrom(const QString& text) {
    return {QDate::fromString(text.first(8), "yyyyMMdd"),
            text.size() > 8 ? QTime::fromString(text.sliced(9), "HHmm") : QTime(0, 0)};
}

QString textFrom(const LocalTime& time, DateKind kind) {
    return time.day.toString("yyyyMMdd") +
           (kind == DateKind::time ? time.time.toString("'T'HHmm") : QString());
}

/// The first dates after the start, "20260102 20260103"; an end is shown as "|".
QString datesOf(const char* ruleText, const QString& start, int count) {
    const auto rule = RecurrenceRule::parse(ruleText);
    if (!rule)
        return "invalid";
    const DateKind kind = start.size() > 8 ? DateKind::time : DateKind::day;
    OccurrenceIterator occurrences(*rule, timeFrom(start), kind, paris);
    EXPECT_EQ(occurrences.next(), timeFrom(start));
    QStringList result;
    for (int i = 0; i < count; ++i) {
        const auto next = occurrences.next();
        result.append(next ? textFrom(*next, kind) : QString("|"));
        if (!next)
            break;
    }
    return result.join(' ');
}

/// Wherever one begins in a rule, the dates are those of one who has seen all before.
void expectTheSameAfterSkipping(const char* ruleText, const QString& start) {
    const auto rule = RecurrenceRule::parse(ruleText);
    const DateKind kind = start.size() > 8 ? DateKind::time : DateKind::day;
    OccurrenceIterator walked(*rule, timeFrom(start), kind, paris);
    std::vector<std::optional<LocalTime>> dates;
    for (int i = 0; i < 12; ++i)
        dates.push_back(walked.next());
    for (std::size_t i = 0; i < dates.size() && dates[i]; ++i) {
        OccurrenceIterator skipped(*rule, timeFrom(start), kind, paris);
        skipped.skipTo(*dates[i]);
        for (std::size_t next = i; next < dates.size(); ++next)
            EXPECT_EQ(skipped.next(), dates[next]) << ruleText << " from date " << i << " to " << next;
        OccurrenceIterator back(*rule, timeFrom(start), kind, paris);
        back.skipTo(*dates[i]);
        for (std::size_t previous = i; previous > 0; --previous)
            EXPECT_EQ(back.previous(), dates[previous - 1]) << ruleText << " back from date " << i;
        EXPECT_FALSE(back.previous().has_value()) << ruleText << " back from date " << i;
        OccurrenceIterator between(*rule, timeFrom(start), kind, paris);
        between.skipTo({dates[i]->day.addDays(1), QTime(0, 0)});
        const auto following = std::find_if(
            dates.begin(), dates.end(), [&](const auto& date) { return !date || dates[i]->day < date->day; });
        if (following != dates.end()) {
            EXPECT_EQ(between.next(), *following) << ruleText << " after date " << i;
        }
    }
}

TEST(OccurrencesTest, FollowsEveryKindOfRule) {
    struct Case {
        const char* rule;
        const char* start;
        const char* expected;
    };
    const Case cases[] = {
        {"FREQ=DAILY", "20260328T0230", "20260329T0230 20260330T0230"},
        {"FREQ=DAILY;INTERVAL=10", "20260225", "20260307 20260317"},
        {"FREQ=WEEKLY;BYDAY=MO,WE", "20260327T0900", "20260330T0900 20260401T0900 20260406T0900"},
        {"FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,TU;WKST=MO", "19970805", "19970810 19970819 19970824"},
        {"FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,TU;WKST=SU", "19970805", "19970817 19970819 19970831"},
        {"FREQ=MONTHLY", "20260131", "20260331 20260531 20260731"},
        {"FREQ=MONTHLY", "20260115", "20260215 20260315"},
        {"FREQ=MONTHLY;BYMONTHDAY=-1", "20260131", "20260228 20260331"},
        {"FREQ=MONTHLY;BYMONTHDAY=28,29,30,31;BYSETPOS=-1", "20260131", "20260228 20260331 20260430"},
        {"FREQ=MONTHLY;BYDAY=2TU", "20260113", "20260210 20260310"},
        {"FREQ=MONTHLY;BYDAY=-1FR", "20260130", "20260227 20260327"},
        {"FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1", "20260130", "20260227 20260331"},
        {"FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13", "20260213", "20260313 20261113 20270813"},
        {"FREQ=YEARLY", "20240229", "20280229 20320229"},
        {"FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU", "20260329", "20270328 20280326"},
        {"FREQ=YEARLY;BYDAY=20MO", "19970519", "19980518 19990517"},
        {"FREQ=YEARLY;BYWEEKNO=20;BYDAY=MO", "19970512", "19980511 19990517"},
        {"FREQ=YEARLY;BYYEARDAY=1,-1", "20260101", "20261231 20270101"},
        // Weeks belong to the year that has most of their days, which is what an interval counts.
        {"FREQ=YEARLY;INTERVAL=2;BYWEEKNO=1;BYDAY=MO", "20240101", "20251229 20280103 20291231"},
        {"FREQ=YEARLY;INTERVAL=3;BYWEEKNO=-1", "20201228", "20231225 20261228 20291224"},
        {"FREQ=YEARLY;BYWEEKNO=53;BYDAY=SA", "20210102", "20270102 20330101"},
        {"FREQ=YEARLY;BYWEEKNO=20", "19970514", "19980513 19990519"},
        {"FREQ=MONTHLY;BYDAY=MO, WE;BYSETPOS= 1, -1", "20260401", "20260429 20260504 20260527"},
        // Days that a month or year does not have
        {"RSCALE=GREGORIAN;FREQ=MONTHLY;SKIP=OMIT", "20260131", "20260331 20260531"},
        {"RSCALE=GREGORIAN;FREQ=MONTHLY;SKIP=BACKWARD", "20260131", "20260228 20260331 20260430"},
        {"RSCALE=GREGORIAN;FREQ=MONTHLY;SKIP=FORWARD", "20260131", "20260301 20260331 20260501 20260531"},
        {"RSCALE=GREGORIAN;FREQ=MONTHLY;SKIP=FORWARD;BYMONTHDAY=1,31;COUNT=6", "20260131",
         "20260201 20260301 20260331 20260401 20260501 |"},
        {"RSCALE=GREGORIAN;FREQ=YEARLY;SKIP=FORWARD", "20240229", "20250301 20260301 20270301 20280229"},
        {"RSCALE=GREGORIAN;FREQ=YEARLY;SKIP=BACKWARD;BYYEARDAY=366", "20241231", "20251231 20261231"},
        {"RSCALE=GREGORIAN;FREQ=YEARLY;SKIP=FORWARD;BYMONTH=2;BYMONTHDAY=30", "20260302",
         "20270301 20280301"},
        {"FREQ=YEARLY;INTERVAL=4;BYMONTH=11;BYDAY=TU;BYMONTHDAY=2,3,4,5,6,7,8", "19961105",
         "20001107 20041102"},
        {"FREQ=DAILY;BYHOUR=9,17;BYMINUTE=0,30;BYSETPOS=1,-1", "20260101T0900",
         "20260101T1730 20260102T0900"},
        {"FREQ=HOURLY;INTERVAL=6", "20260101T2100", "20260102T0300 20260102T0900"},
        {"FREQ=MINUTELY;INTERVAL=90;BYDAY=SA", "20260101T0000", "20260103T0000 20260103T0130"},
        // On the way to summer time: 02:00 and 03:00 are one moment, which counts once.
        {"FREQ=HOURLY;COUNT=4", "20260329T0000", "20260329T0100 20260329T0300 20260329T0400 |"},
        {"FREQ=MINUTELY;INTERVAL=30;COUNT=4", "20260329T0130", "20260329T0300 20260329T0330 20260329T0400 |"},
        {"FREQ=DAILY;BYHOUR=2,3;COUNT=4", "20260328T0200", "20260328T0300 20260329T0300 20260330T0200 |"},
        {"FREQ=HOURLY;COUNT=4", "20261025T0100", "20261025T0200 20261025T0300 20261025T0400 |"},
        // Where hours are meant for times, days know nothing of them.
        {"FREQ=HOURLY;INTERVAL=48;BYHOUR=5", "20260101", "20260103 20260105"},
        // The start counts though it fits the rule in none of these.
        {"FREQ=WEEKLY;BYDAY=MO;COUNT=3", "20260327", "20260330 20260406 |"},
        {"FREQ=DAILY;COUNT=1", "20260327", "|"},
        {"FREQ=DAILY;UNTIL=20260329", "20260327T0900", "20260328T0900 20260329T0900 |"},
        {"FREQ=DAILY;UNTIL=20260329T070000Z", "20260327T0900", "20260328T0900 20260329T0900 |"},
        {"FREQ=DAILY;UNTIL=20260329T065959Z", "20260327T0900", "20260328T0900 |"},
        {"FREQ=DAILY;UNTIL=20260329T215959Z", "20260327", "20260328 20260329 |"},
        {"FREQ=DAILY;UNTIL=20260329T090000", "20260327T0900", "20260328T0900 20260329T0900 |"},
        {"FREQ=YEARLY", "99980101", "99990101 |"},
    };
    for (const Case& each : cases) {
        const QString expected = each.expected;
        EXPECT_EQ(datesOf(each.rule, each.start, static_cast<int>(expected.split(' ').size())), expected)
            << each.rule << " from " << each.start;
        expectTheSameAfterSkipping(each.rule, each.start);
    }
}

TEST(OccurrencesTest, CountsWhatTheClocksSkipOnlyUpToTheLastDate) {
    for (const auto& [rule, start] : {std::pair{"FREQ=MINUTELY;INTERVAL=15", "20260329T0130"},
                                      {"FREQ=DAILY;BYHOUR=2,3", "20260328T0200"},
                                      {"FREQ=SECONDLY", "20260329T0159"},
                                      {"FREQ=HOURLY;BYMINUTE=0,30,40", "20260329T0030"}}) {
        for (int count = 1; count <= 11; ++count)
            expectTheSameAfterSkipping((QByteArray(rule) + ";COUNT=" + QByteArray::number(count)).constData(),
                                       start);
    }
}

TEST(OccurrencesTest, EndsWhereARuleHasNoDates) {
    for (const char* rule : {"FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=MONTHLY;BYMONTHDAY=31;BYMONTH=4",
                             "FREQ=MINUTELY;INTERVAL=1440;BYHOUR=5", "FREQ=SECONDLY;INTERVAL=60;BYSECOND=30",
                             "FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=DAILY;INTERVAL=2000000000"})
        EXPECT_EQ(datesOf(rule, "20260101T0900", 1), "|") << rule;
}

QByteArray upTo(int first, int last) {
    QByteArray result;
    for (int number = first; number <= last; ++number)
        result += QByteArray::number(number) + ',';
    return result.chopped(1);
}

TEST(OccurrencesTest, FindsByArithmeticWhatLiesFarAway) {
    const QByteArray everySecond =
        ";BYHOUR=" + upTo(0, 23) + ";BYMINUTE=" + upTo(0, 59) + ";BYSECOND=" + upTo(0, 59);
    struct Case {
        QByteArray rule;
        const char* nextAfter2026;
        qint64 steps;
    };
    for (const Case& each :
         {Case{"FREQ=SECONDLY", "20260101T0000", 3}, Case{"FREQ=DAILY;COUNT=2147483647", "20260101T0930", 3},
          Case{"FREQ=MINUTELY;INTERVAL=7;COUNT=2147483647", "20260101T0003", 3},
          Case{"FREQ=YEARLY;BYMONTH=" + upTo(1, 12) + ";BYMONTHDAY=" + upTo(1, 31) + everySecond,
               "20260101T0000", 400},
          Case{"FREQ=YEARLY" + everySecond + ";BYDAY=MO,TU,WE,TH,FR,SA,SU;BYSETPOS=-1", "20261231T2359",
               400}}) {
        OccurrenceIterator dates(*RecurrenceRule::parse(each.rule), timeFrom("19700101T0930"), DateKind::time,
                                 paris);
        dates.limitSteps(100'000);
        dates.skipTo(timeFrom("20260101T0000"));
        const auto next = dates.next();
        EXPECT_EQ(next ? textFrom(*next, DateKind::time) : "|", each.nextAfter2026) << each.rule.constData();
        EXPECT_LE(100'000 - dates.stepsLeft(), each.steps) << each.rule.constData();
    }
}

TEST(OccurrencesTest, GivesUpAfterAsManySteps) {
    OccurrenceIterator dates(*RecurrenceRule::parse("FREQ=SECONDLY;INTERVAL=60;BYSECOND=30"),
                             timeFrom("20260101T0000"), DateKind::time, paris);
    dates.limitSteps(1000);
    EXPECT_TRUE(dates.next().has_value());
    EXPECT_FALSE(dates.next().has_value());
    EXPECT_TRUE(dates.ranOut());
    // What has no date in the span costs no more than the span.
    OccurrenceIterator never(*RecurrenceRule::parse("FREQ=YEARLY;BYYEARDAY=1;BYMONTH=12"),
                             timeFrom("20200101T0000"), DateKind::time, paris);
    never.limitSteps(1000);
    never.skipTo(timeFrom("20260101T0000"));
    never.endWith({2025, 1, 1}, {2027, 1, 1});
    EXPECT_FALSE(never.next().has_value());
    EXPECT_LT(1000 - never.stepsLeft(), 20);
}

TEST(RecurrenceRuleTest, RefusesWhatIsNoRule) {
    for (const char* rule :
         {"", "DAILY", "FREQ=SOMETIMES", "FREQ=DAILY;COUNT=-1", "FREQ=DAILY;COUNT=x", "FREQ=DAILY;INTERVAL=0",
          "INTERVAL=2", "FREQ=DAILY;BYDAY=XX", "FREQ=DAILY;BYDAY=0MO", "FREQ=DAILY;BYMONTH=13",
          "FREQ=DAILY;UNTIL=20260230", "FREQ=DAILY;UNTIL=tomorrow", "FREQ=DAILY;FREQ=WEEKLY",
          "FREQ=DAILY;NONSENSE=1", "FREQ=DAILY;=", "FREQ=DAILY;BYDAY=", "FREQ=MONTHLY;RSCALE=HEBREW",
          "FREQ=DAILY;COUNT=99999999999", "FREQ=MONTHLY;RSCALE=GREGORIAN;SKIP=SIDEWAYS"})
        EXPECT_FALSE(RecurrenceRule::parse(rule).has_value()) << rule;
    EXPECT_TRUE(RecurrenceRule::parse("freq=weekly;byday=mo;X-OWN=1;rscale=gregorian;").has_value());
}

TEST(RecurrenceRuleTest, SaysWhatAPersonNeedsToKnow) {
    const EKRecurrenceRule simple = EKRecurrenceRule::parse("FREQ=WEEKLY;INTERVAL=2");
    EXPECT_EQ(simple, EKRecurrenceRule::every(EKRecurrenceFrequency::weekly, 2));
    EXPECT_TRUE(simple.isSimple);
    EXPECT_FALSE(EKRecurrenceRule::parse("FREQ=DAILY;COUNT=3").isSimple);
    EXPECT_EQ(EKRecurrenceRule::parse("FREQ=HOURLY").frequency, EKRecurrenceFrequency::other);
    EXPECT_EQ(EKRecurrenceRule::parse("nonsense").frequency, EKRecurrenceFrequency::other);
}

}  // namespace
}  // namespace kestrant
