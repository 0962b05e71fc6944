#include "recap/Recap.h"

#include "recap/RecapTexts.h"

#include <gmock/gmock.h>

#include <random>

namespace kestrant {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

const TimeZone paris{*TimeZone::named("Europe/Paris")};

CompletionRecord at(const char* localTime, const char* identifier = "a") {
    const QDateTime time =
        QDateTime::fromString(QString::fromUtf8(localTime), QStringLiteral("yyyy-MM-dd HH:mm"));
    const Instant instant = paris.instantAt(time.date(), time.time());
    return {QString::fromUtf8(identifier), instant, instant, 1};
}

Recap recap(RecapKind kind, QDate today, std::vector<CompletionRecord> records) {
    std::ranges::sort(records, {}, &CompletionRecord::completedAt);
    const Instant now = paris.instantAt(today, QTime(20, 0));
    return recapOf(periodContaining(kind, today, Qt::Monday), completedDays(records, paris, now), today);
}

TEST(RecapPeriods, HoldTheDayAndFollowEachOtherWithoutAGap) {
    std::mt19937 random(7);
    for (int round = 0; round < 500; ++round) {
        const QDate day = QDate(1970, 1, 1).addDays(int(random() % 40'000));
        const auto firstDay = static_cast<Qt::DayOfWeek>(1 + random() % 7);
        const auto kind = static_cast<RecapKind>(random() % 4);
        const RecapPeriod period = periodContaining(kind, day, firstDay);
        ASSERT_TRUE(period.first <= day && day <= period.last);
        ASSERT_EQ(period, periodContaining(kind, period.first, firstDay));
        ASSERT_EQ(period, periodContaining(kind, period.last, firstDay));
        const RecapPeriod before = periodBefore(period);
        ASSERT_EQ(before.last.addDays(1), period.first);
        ASSERT_EQ(before, periodContaining(kind, before.first, firstDay));
        int isoYear = 0;
        ASSERT_EQ(weekNumberOf(day, Qt::Monday).week, day.weekNumber(&isoYear));
        ASSERT_EQ(weekNumberOf(day, Qt::Monday).year, isoYear);
        const WeekNumber american = weekNumberOf(QDate(day.year(), 1, 1), Qt::Sunday);
        ASSERT_EQ(american, (WeekNumber{1, day.year()}));
    }
}

TEST(CompletedDays, CountEveryRecordOnceOnTheDayAndInTheHourThatTheClockShowed) {
    std::mt19937 random(11);
    std::vector<CompletionRecord> records;
    for (int number = 0; number < 3'000; ++number) {
        // Two years of each zone's hour, the changes of the clock among them, and a few from 1970.
        const auto seconds = number < 20 ? random() % 90'000 : 1'700'000'000u + random() % 63'000'000u;
        const Instant instant{std::chrono::seconds(seconds)};
        records.push_back({QString::number(number), instant, instant, 1});
    }
    std::ranges::sort(records, {}, &CompletionRecord::completedAt);
    for (const char* name :
         {"Europe/Paris", "America/Sao_Paulo", "Australia/Lord_Howe", "Pacific/Apia", "UTC"}) {
        const TimeZone zone{*TimeZone::named(name)};
        const Instant now{std::chrono::seconds(1'740'000'000)};
        std::map<QDate, CompletedDay> expected;
        for (const CompletionRecord& record : records) {
            if (record.completedAt > now)
                continue;
            CompletedDay& day = expected[zone.dayOf(record.completedAt)];
            ++day.count;
            ++day.hours[static_cast<std::size_t>(zone.timeOf(record.completedAt).hour())];
        }
        const std::vector<CompletedDay> days = completedDays(records, zone, now);
        ASSERT_EQ(days.size(), expected.size()) << name;
        for (const CompletedDay& day : days) {
            ASSERT_EQ(day.count, expected.at(day.day).count) << name;
            ASSERT_EQ(day.hours, expected.at(day.day).hours) << name << qPrintable(day.day.toString());
        }
    }
}

TEST(RecapOfAPeriod, TellsOfAWeek) {
    const QDate saturday(2026, 11, 21);
    const Recap week = recap(RecapKind::week, saturday,
                             {at("2026-11-09 09:00"), at("2026-11-15 09:00"), at("2026-11-16 09:10"),
                              at("2026-11-17 09:20"), at("2026-11-17 23:59"), at("2026-11-19 09:00"),
                              at("2026-11-20 08:00"), at("2026-11-20 09:30"), at("2026-11-22 10:00")});
    EXPECT_THAT(week.days, ElementsAre(1, 2, 0, 1, 2, 0, 0)) << "what is to come is not counted";
    EXPECT_EQ(week.completed, 6);
    EXPECT_EQ(week.elapsedDays, 6);
    EXPECT_EQ(week.quietDays, 2);
    EXPECT_EQ(week.bestDay, QDate(2026, 11, 20)) << "the later one of two";
    EXPECT_EQ(week.usualHour, 9);
    EXPECT_EQ(week.streak, 2) << "the present day is not over";
    EXPECT_EQ(week.longestStreak, 2);
    EXPECT_EQ(week.completedBefore, 1) << "the Sunday before is not compared with a Saturday";
}

TEST(RecapOfAPeriod, HoldsAtTheBordersOfYearsAndMonths) {
    const std::vector<CompletionRecord> records{at("2026-12-31 18:00"), at("2027-01-01 00:00"),
                                                at("2027-02-28 12:00"), at("2027-03-31 12:00")};
    const Recap newYear = recap(RecapKind::week, QDate(2027, 1, 1), records);
    EXPECT_EQ(newYear.completed, 2);
    EXPECT_EQ(weekNumberOf(newYear.period.first, Qt::Monday), (WeekNumber{53, 2026}));
    EXPECT_EQ(recap(RecapKind::year, QDate(2027, 1, 1), records).completed, 1);
    EXPECT_EQ(recap(RecapKind::year, QDate(2026, 12, 31), records).completed, 1);
    EXPECT_EQ(recap(RecapKind::day, QDate(2027, 1, 1), records).streak, 2);
    // A month is compared with a shorter one as a whole.
    EXPECT_EQ(recap(RecapKind::month, QDate(2027, 3, 30), records).completedBefore, 1);
    const Recap leap = recap(RecapKind::year, QDate(2028, 6, 1), {});
    EXPECT_EQ(leap.days.size(), 366u);
    EXPECT_EQ(leap.usualHour, std::nullopt);
    EXPECT_EQ(leap.bestDay, std::nullopt);
}

TEST(RecapByList, LeavesOutWhatNobodyKnows) {
    const std::vector<CompletionRecord> records{
        at("2026-11-20 09:00", "home1"), at("2026-11-21 09:00", "work1"), at("2026-11-21 10:00", "gone"),
        at("2026-11-21 11:00", "home2"), at("2026-11-21 12:00", "work2"), at("2026-11-21 23:00", "work3")};
    const auto listOf = [](const QString& identifier) {
        return identifier == QLatin1String("gone") ? std::nullopt : std::optional(identifier.chopped(1));
    };
    const QDate day(2026, 11, 21);
    EXPECT_THAT(completedByList(records, periodContaining(RecapKind::day, day, Qt::Monday), paris,
                                paris.instantAt(day, QTime(20, 0)), listOf),
                ElementsAre(ListCount{QStringLiteral("work"), 2}, ListCount{QStringLiteral("home"), 1}));
}

TEST(RecapTexts, SayOneThingAndNeverReproach) {
    struct Case {
        RecapKind kind;
        std::vector<CompletionRecord> records;
        const char* title;
        const char* english;
        const char* french;
    };
    const std::vector<CompletionRecord> row{at("2026-11-20 09:00"), at("2026-11-21 09:00"),
                                            at("2026-11-21 10:00")};
    const std::vector<CompletionRecord> less{at("2026-11-10 09:00"), at("2026-11-11 09:00"),
                                             at("2026-11-20 09:00")};
    const std::vector<CompletionRecord> more{at("2026-11-10 09:00"), at("2026-11-20 09:00"),
                                             at("2026-11-20 10:00")};
    const Case cases[]{
        {RecapKind::day, {}, "Today", "nothing completed yet", "rien de terminé pour l’instant"},
        {RecapKind::day, row, "Today", "2 days in a row", "2 jours de suite"},
        {RecapKind::day, {at("2026-11-21 09:00")}, "Today", "completed", "terminé"},
        {RecapKind::week, {}, "This week", "a quiet week so far", "une semaine calme jusqu’ici"},
        {RecapKind::week, more, "This week", "1 more than last week by this day",
         "1 de plus que la semaine dernière à ce jour"},
        {RecapKind::week, less, "This week", "best day: Friday, with 1", "meilleur jour : vendredi, avec 1"},
        {RecapKind::month, row, "November", "best day: Sat 21, with 2", "meilleur jour : sam. 21, avec 2"},
        {RecapKind::year, row, "2026", "best day: 21 November, with 2",
         "meilleur jour : 21 novembre, avec 2"},
        {RecapKind::year,
         {at("2025-02-01 09:00"), at("2026-02-01 09:00"), at("2026-02-01 10:00")},
         "2026",
         "1 more than in 2025 by this day",
         "1 de plus qu’en 2025 à ce jour"},
    };
    const QDate today(2026, 11, 21);
    for (const Case& each : cases) {
        const Recap told = recap(each.kind, today, each.records);
        const QLocale english(QLocale::English, QLocale::UnitedKingdom);
        const QLocale french(QLocale::French, QLocale::France);
        EXPECT_EQ(recapTitle(told.period, today, Language::english, english).toStdString(), each.title);
        EXPECT_EQ(recapSentence(told, today, Language::english, english).toStdString(), each.english);
        EXPECT_EQ(recapSentence(told, today, Language::french, french).toStdString(), each.french);
    }
}

}  // namespace
}  // namespace kestrant
