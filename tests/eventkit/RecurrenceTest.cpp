#include "eventkit/icalendar/Occurrences.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using icalendar::DateKind;
using icalendar::LocalTime;
using icalendar::Occurrences;
using icalendar::RecurrenceRule;

const ZoneCalendar paris{*TimeZone::named("Europe/Paris")};

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
    Occurrences occurrences(*rule, timeFrom(start), kind, paris);
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
    Occurrences walked(*rule, timeFrom(start), kind, paris);
    std::vector<std::optional<LocalTime>> dates;
    for (int i = 0; i < 12; ++i)
        dates.push_back(walked.next());
    for (std::size_t i = 0; i < dates.size() && dates[i]; ++i) {
        Occurrences skipped(*rule, timeFrom(start), kind, paris);
        skipped.skipTo(*dates[i]);
        for (std::size_t next = i; next < dates.size(); ++next)
            EXPECT_EQ(skipped.next(), dates[next]) << ruleText << " from date " << i << " to " << next;
        Occurrences between(*rule, timeFrom(start), kind, paris);
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
        {"FREQ=YEARLY;INTERVAL=4;BYMONTH=11;BYDAY=TU;BYMONTHDAY=2,3,4,5,6,7,8", "19961105",
         "20001107 20041102"},
        {"FREQ=DAILY;BYHOUR=9,17;BYMINUTE=0,30;BYSETPOS=1,-1", "20260101T0900",
         "20260101T1730 20260102T0900"},
        {"FREQ=HOURLY;INTERVAL=6", "20260101T2100", "20260102T0300 20260102T0900"},
        {"FREQ=MINUTELY;INTERVAL=90;BYDAY=SA", "20260101T0000", "20260103T0000 20260103T0130"},
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

TEST(OccurrencesTest, EndsWhereARuleHasNoDates) {
    for (const char* rule : {"FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=MONTHLY;BYMONTHDAY=31;BYMONTH=4",
                             "FREQ=MINUTELY;INTERVAL=1440;BYHOUR=5", "FREQ=SECONDLY;INTERVAL=60;BYSECOND=30",
                             "FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=DAILY;INTERVAL=2000000000"})
        EXPECT_EQ(datesOf(rule, "20260101T0900", 1), "|") << rule;
}

TEST(RecurrenceRuleTest, RefusesWhatIsNoRule) {
    for (const char* rule :
         {"", "DAILY", "FREQ=SOMETIMES", "FREQ=DAILY;COUNT=-1", "FREQ=DAILY;COUNT=x", "FREQ=DAILY;INTERVAL=0",
          "INTERVAL=2", "FREQ=DAILY;BYDAY=XX", "FREQ=DAILY;BYDAY=0MO", "FREQ=DAILY;BYMONTH=13",
          "FREQ=DAILY;UNTIL=20260230", "FREQ=DAILY;UNTIL=tomorrow", "FREQ=DAILY;FREQ=WEEKLY",
          "FREQ=DAILY;NONSENSE=1", "FREQ=DAILY;=", "FREQ=DAILY;BYDAY=", "FREQ=MONTHLY;RSCALE=HEBREW",
          "FREQ=DAILY;COUNT=99999999999"})
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
