#include "reminders/quickadd/QuickAddParser.h"

#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

/// Friday 27 March 2026, noon, in Paris.
QuickAddContext context(std::optional<QLocale> locale = {}) {
    return {.now = at("Europe/Paris", {2026, 3, 27}, {12, 0}),
            .zone = *TimeZone::named("Europe/Paris"),
            .lists = {{.id = QStringLiteral("home"), .title = QStringLiteral("Home")}},
            .locale = std::move(locale)};
}

TEST(QuickAddParser, GivesAReminderEverythingThatTheLineSays) {
    const QuickAddLine read = parseQuickAdd(
        QStringLiteral("Water every 3 days at 8am !! #home !flag https://example.org // two cans"),
        context());
    EXPECT_EQ(read.title, QStringLiteral("Water"));
    EXPECT_EQ(read.day, QDate(2026, 3, 28));
    EXPECT_EQ(read.time, QTime(8, 0));
    EXPECT_EQ(read.rule->text, QStringLiteral("FREQ=DAILY;INTERVAL=3"));
    EXPECT_EQ(read.priority, NewReminderPriority::normal);
    EXPECT_EQ(read.listID, QStringLiteral("home"));
    EXPECT_TRUE(read.isFlagged);
    EXPECT_EQ(read.url, QStringLiteral("https://example.org"));
    EXPECT_EQ(read.notes, QStringLiteral("two cans"));
}

TEST(QuickAddParser, GivesAlertsInTheFormThatTheDueDateHas) {
    struct Case {
        const char* line;
        ReminderAlertSchedule schedule;
    };
    const Case cases[] = {
        {"call tomorrow 9am, 30 min before", RelativeToDueTime{-1800}},
        {"call tomorrow 9am alert the day before at 6pm", RelativeToDueTime{-15 * 3600}},
        {"call sunday alert the day before at 6pm", DayRelativeToDueDate{-1, 18, 0}},
        {"call sunday remind me 1 day before", DayRelativeToDueDate{-1, 9, 0}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(parseQuickAdd(QString::fromUtf8(each.line), context()).alert, each.schedule) << each.line;
}

TEST(QuickAddParser, ReadsNumbersByTheCustomsOfThePlaceAndElseByThoseOfTheLanguage) {
    const QString line = QStringLiteral("dentist 5/6");
    EXPECT_EQ(parseQuickAdd(line, context()).day, QDate(2026, 5, 6));
    EXPECT_EQ(parseQuickAdd(line, context(QLocale::c())).day, QDate(2026, 5, 6));
    EXPECT_EQ(parseQuickAdd(line, context(QLocale(QLocale::English, QLocale::UnitedStates))).day,
              QDate(2026, 5, 6));
    EXPECT_EQ(parseQuickAdd(line, context(QLocale(QLocale::English, QLocale::UnitedKingdom))).day,
              QDate(2026, 6, 5));
}

}  // namespace
}  // namespace kestrant
