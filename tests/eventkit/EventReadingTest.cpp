#include "eventkit/icalendar/EventSeries.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

const TimeZone paris{*TimeZone::named("Europe/Paris")};

/// The events of a file, each as a series of its own.
std::vector<EventSeries> seriesIn(const QByteArray& components) {
    const auto document =
        icalendar::Document::parse("BEGIN:VCALENDAR\nVERSION:2.0\n" + components + "END:VCALENDAR\n");
    EXPECT_TRUE(document.has_value());
    std::vector<EventSeries> result;
    for (const icalendar::EventItem& item : icalendar::readEvents(*document, paris))
        result.emplace_back(item, QString::fromUtf8(item.key), "calendar", paris);
    return result;
}

QByteArray event(const QByteArray& lines) {
    return "BEGIN:VEVENT\nUID:1\n" + lines + "END:VEVENT\n";
}

EKEventData dataOf(const QByteArray& lines) {
    const auto series = seriesIn(event(lines));
    EXPECT_EQ(series.size(), 1U);
    const auto first = series.at(0).first();
    EXPECT_TRUE(first.has_value()) << lines.constData();
    return first ? *first->data : EKEventData{};
}

/// Every occurrence from 20 March to 19 April 2026, as "27 09:00-10:00"; of whole days as "27-28".
QString occurrencesIn(const QByteArray& components) {
    std::vector<std::shared_ptr<const EKEventData>> found;
    for (const EventSeries& series : seriesIn(components)) {
        for (const EventSeries::Occurrence& single : series.singles())
            found.push_back(single.data);
        const Instant from = at("Europe/Paris", {2026, 3, 20});
        // Wherever the present is, the same occurrences come to light.
        std::optional<std::vector<std::shared_ptr<const EKEventData>>> expected;
        for (const int days : {-400, 0, 9, 60}) {
            std::vector<std::shared_ptr<const EKEventData>> recurring;
            const auto cost =
                series.forEachRecurring({from, at("Europe/Paris", {2026, 4, 19}), from + days * 24h},
                                        [&](const EventSeries::Date& date) {
                                            recurring.push_back(series.dataOf(date));
                                            return true;
                                        });
            EXPECT_FALSE(cost.isExceeded) << components.constData();
            const auto key = [](const auto& data) {
                return std::pair(data->startDate, *data->occurrenceDate);
            };
            std::sort(recurring.begin(), recurring.end(),
                      [&](const auto& a, const auto& b) { return key(a) < key(b); });
            if (!expected)
                expected = recurring;
            EXPECT_TRUE(std::equal(recurring.begin(), recurring.end(), expected->begin(), expected->end(),
                                   [](const auto& a, const auto& b) { return *a == *b; }))
                << components.constData() << " seen from " << days << " days later";
        }
        found.insert(found.end(), expected->begin(), expected->end());
    }
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a->startDate < b->startDate; });
    QStringList result;
    for (const auto& data : found) {
        const auto text = [&](Instant instant, const char* format) {
            return QDateTime(paris.dayOf(instant), paris.timeOf(instant)).toString(QLatin1String(format));
        };
        const QString times = data->isAllDay
                                  ? text(data->startDate, "dd") + "-" + text(data->endDate, "dd")
                                  : text(data->startDate, "dd HH:mm") + "-" + text(data->endDate, "HH:mm");
        result.append(times + (data->isDetached ? "*" : ""));
    }
    return result.join(", ");
}

TEST(EventReadingTest, ReadsStartAndEndInEveryShape) {
    struct Case {
        const char* lines;
        const char* start;
        const char* end;
        const char* zone;
        bool isAllDay = false;
    };
    constexpr auto none = "";
    const Case cases[] = {
        {"DTSTART:20260327T090000Z\nDTEND:20260327T100000Z\n", "2026-03-27T09:00:00Z", "2026-03-27T10:00:00Z",
         "UTC"},
        {"DTSTART;TZID=Europe/Paris:20260327T090000\nDTEND;TZID=Europe/Paris:20260327T100000\n",
         "2026-03-27T08:00:00Z", "2026-03-27T09:00:00Z", "Europe/Paris"},
        {"DTSTART;TZID=Tokyo Standard Time:20260327T090000\nDTEND;TZID=Europe/Paris:20260327T100000\n",
         "2026-03-27T00:00:00Z", "2026-03-27T09:00:00Z", "Asia/Tokyo"},
        {"DTSTART:20260327T090000\nDTEND:20260327T100000\n", "2026-03-27T08:00:00Z", "2026-03-27T09:00:00Z",
         none},
        {"DTSTART;TZID=Middle/Earth:20260327T090000\n", "2026-03-27T08:00:00Z", "2026-03-27T08:00:00Z", none},
        // Lengths: exact hours, and days by the calendar (the 29th has 23 hours).
        {"DTSTART;TZID=Europe/Paris:20260328T120000\nDURATION:PT24H\n", "2026-03-28T11:00:00Z",
         "2026-03-29T11:00:00Z", "Europe/Paris"},
        {"DTSTART;TZID=Europe/Paris:20260328T120000\nDURATION:P1D\n", "2026-03-28T11:00:00Z",
         "2026-03-29T10:00:00Z", "Europe/Paris"},
        {"DTSTART;VALUE=DATE:20260328\nDURATION:P2D\n", "2026-03-27T23:00:00Z", "2026-03-29T22:00:00Z", none,
         true},
        {"DTSTART;VALUE=DATE:20260328\nDTEND;VALUE=DATE:20260330\n", "2026-03-27T23:00:00Z",
         "2026-03-29T22:00:00Z", none, true},
        {"DTSTART:20260328\n", "2026-03-27T23:00:00Z", "2026-03-28T23:00:00Z", none, true},
        {"DTSTART;VALUE=DATE:20260328\nDTEND;VALUE=DATE:20270502\n", "2026-03-27T23:00:00Z",
         "2027-05-01T22:00:00Z", none, true},
        // Without an end, or with one that is none.
        {"DTSTART:20260327T090000Z\n", "2026-03-27T09:00:00Z", "2026-03-27T09:00:00Z", "UTC"},
        {"DTSTART:20260327T090000Z\nDTEND:20260327T090000Z\n", "2026-03-27T09:00:00Z", "2026-03-27T09:00:00Z",
         "UTC"},
        {"DTSTART:20260327T090000Z\nDTEND:20260326T100000Z\n", "2026-03-27T09:00:00Z", "2026-03-27T09:00:00Z",
         "UTC"},
        {"DTSTART:20260327T090000Z\nDTEND:soon\nDURATION:PT1H\n", "2026-03-27T09:00:00Z",
         "2026-03-27T10:00:00Z", "UTC"},
        {"DTSTART:20260327T090000Z\nDURATION:-PT1H\n", "2026-03-27T09:00:00Z", "2026-03-27T09:00:00Z", "UTC"},
        {"DTSTART:20260327T090000Z\nDURATION:PT999999999H\n", "2026-03-27T09:00:00Z", "2026-03-27T09:00:00Z",
         "UTC"},
        {"DTSTART;VALUE=DATE:20260328\nDTEND;VALUE=DATE:20260328\n", "2026-03-27T23:00:00Z",
         "2026-03-28T23:00:00Z", none, true},
        {"DTSTART;VALUE=DATE:20260328\nDTEND;VALUE=DATE:20260301\n", "2026-03-27T23:00:00Z",
         "2026-03-28T23:00:00Z", none, true},
        {"DTSTART;VALUE=DATE:20260328\nDTEND:20260328T180000Z\n", "2026-03-27T23:00:00Z",
         "2026-03-28T23:00:00Z", none, true},
        {"DTSTART;TZID=Europe/Paris:20260327T090000\nDTEND;VALUE=DATE:20260328\n", "2026-03-27T08:00:00Z",
         "2026-03-27T23:00:00Z", "Europe/Paris"},
        // Long ago, and where the clocks are changed.
        {"DTSTART:19700101T000000Z\n", "1970-01-01T00:00:00Z", "1970-01-01T00:00:00Z", "UTC"},
        {"DTSTART;VALUE=DATE:18991231\n", "1899-12-30T23:50:39Z", "1899-12-31T23:50:39Z", none, true},
        {"DTSTART;TZID=Europe/Paris:20260329T023000\nDTEND;TZID=Europe/Paris:20260329T033000\n",
         "2026-03-29T01:30:00Z", "2026-03-29T01:30:00Z", "Europe/Paris"},
        {"DTSTART;TZID=Europe/Paris:20261025T023000\nDTEND;TZID=Europe/Paris:20261025T030000\n",
         "2026-10-25T00:30:00Z", "2026-10-25T02:00:00Z", "Europe/Paris"},
    };
    for (const Case& each : cases) {
        const EKEventData data = dataOf(each.lines);
        EXPECT_EQ(toIso8601(data.startDate), each.start) << each.lines;
        EXPECT_EQ(toIso8601(data.endDate), each.end) << each.lines;
        EXPECT_EQ(data.timeZone, TimeZone::named(each.zone)) << each.lines;
        EXPECT_EQ(data.isAllDay, each.isAllDay) << each.lines;
        EXPECT_EQ(data.occurrenceDate, std::nullopt) << each.lines;
    }
}

TEST(EventReadingTest, ReadsTheOtherProperties) {
    const EKEventData data =
        dataOf("DTSTART:20260327T090000Z\nDTEND:20260327T100000Z\nSUMMARY:Lunch\\, early\n"
               "DESCRIPTION:a\\nb\nLOCATION:Here\nURL:https://example.org\n"
               "DTSTAMP:20260101T000000Z\nLAST-MODIFIED:20260102T000000Z\n"
               "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT15M\nEND:VALARM\n"
               "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER;RELATED=END:PT0S\nEND:VALARM\n");
    EXPECT_EQ(data.title, "Lunch, early");
    EXPECT_EQ(data.notes, "a\nb");
    EXPECT_EQ(data.location, "Here");
    EXPECT_EQ(data.url, "https://example.org");
    EXPECT_EQ(data.creationDate, at("UTC", {2026, 1, 1}));
    EXPECT_EQ(data.lastModifiedDate, at("UTC", {2026, 1, 2}));
    EXPECT_EQ(data.eventIdentifier, "1");
    EXPECT_EQ(data.calendarIdentifier, "calendar");
    ASSERT_EQ(data.alarms.size(), 2U);
    EXPECT_EQ(data.alarms[0].relativeOffset, -15min);
    EXPECT_TRUE(data.alarms[0].followsStart);
    EXPECT_EQ(data.alarms[1].relativeOffset, 0min);
    EXPECT_FALSE(data.alarms[1].followsStart);
}

TEST(EventReading, TakesTheConferenceForTheAddressOfAnEventWithoutOne) {
    const QByteArray when = "DTSTART:20260327T090000Z\n";
    const QByteArray audio = "CONFERENCE;VALUE=URI;FEATURE=AUDIO:https://a.example\n";
    const QByteArray video = "CONFERENCE;VALUE=URI;FEATURE=AUDIO,VIDEO;LABEL=Join:https://v.example\n";
    const QByteArray phone = "CONFERENCE;VALUE=URI;FEATURE=PHONE:tel:+33123456789\n";
    const QByteArray other = "X-GOOGLE-CONFERENCE:https://g.example\n";
    for (const auto& [lines, url] : {
             std::pair(audio + video, "https://v.example"),
             std::pair(phone + audio + other, "https://a.example"),
             std::pair(phone + other, "https://g.example"),
             std::pair(video + "URL:https://u.example\n", "https://u.example"),
         })
        EXPECT_EQ(dataOf(when + lines).url, url) << lines.constData();
    EXPECT_EQ(dataOf(when + phone).url, std::nullopt);
}

TEST(EventReadingTest, TellsTheEventsOfAFileApart) {
    const auto series = seriesIn("BEGIN:VEVENT\nUID:a\nDTSTART:20260327T090000Z\nEND:VEVENT\n"
                                 "BEGIN:VEVENT\nUID:b\nSUMMARY:no start\nEND:VEVENT\n"
                                 "BEGIN:VEVENT\nUID:c\nRECURRENCE-ID:20260327T080000Z\n"
                                 "DTSTART:20260327T120000Z\nEND:VEVENT\n"
                                 "BEGIN:VEVENT\nDTSTART:20260328T090000Z\nEND:VEVENT\n"
                                 "BEGIN:VTODO\nUID:d\nEND:VTODO\n"
                                 "BEGIN:VEVENT\nUID:a\nDTSTART:20260329T090000Z\nEND:VEVENT\n");
    ASSERT_EQ(series.size(), 4U);
    EXPECT_EQ(series[0].item().key, "a");
    EXPECT_EQ(series[1].item().key, "c/20260327T080000Z");
    EXPECT_EQ(series[2].item().key, "");
    EXPECT_EQ(series[3].item().key, "a");
    EXPECT_EQ(series[3].item().index, 4);
    const auto orphan = series[1].first();
    ASSERT_TRUE(orphan.has_value());
    EXPECT_TRUE(orphan->data->isDetached);
    EXPECT_EQ(orphan->data->occurrenceDate, at("UTC", {2026, 3, 27}, {8, 0}));
    EXPECT_EQ(orphan->data->startDate, at("UTC", {2026, 3, 27}, {12, 0}));
}

TEST(EventSeriesTest, ShowsTheOccurrencesOfASeries) {
    const QByteArray daily = "DTSTART;TZID=Europe/Paris:20260327T090000\n"
                             "DTEND;TZID=Europe/Paris:20260327T100000\nRRULE:FREQ=DAILY;COUNT=4\n";
    const QByteArray days = "DTSTART;VALUE=DATE:20260327\nRRULE:FREQ=DAILY;COUNT=3\n";
    const auto change = [](const QByteArray& lines) {
        return "BEGIN:VEVENT\nUID:1\n" + lines + "END:VEVENT\n";
    };
    struct Case {
        const char* what;
        QByteArray components;
        const char* expected;
    };
    const Case cases[] = {
        {"local time when the clocks change", event(daily),
         "27 09:00-10:00, 28 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00"},
        {"UTC", event("DTSTART:20260328T080000Z\nDURATION:PT1H\nRRULE:FREQ=DAILY;COUNT=2\n"),
         "28 09:00-10:00, 29 10:00-11:00"},
        {"in the hour that is left out",
         event("DTSTART;TZID=Europe/Paris:20260328T023000\nDURATION:PT30M\nRRULE:FREQ=DAILY;COUNT=3\n"),
         "28 02:30-03:00, 29 03:30-04:00, 30 02:30-03:00"},
        {"an exact length over the change, and one by the calendar",
         event("DTSTART;TZID=Europe/Paris:20260327T220000\nDTEND;TZID=Europe/Paris:20260328T060000\n"
               "RRULE:FREQ=DAILY;COUNT=2\n") +
             event("DTSTART;TZID=Europe/Paris:20260326T120000\nDURATION:P1D\nRRULE:FREQ=DAILY;COUNT=3\n"),
         "26 12:00-12:00, 27 12:00-12:00, 27 22:00-06:00, 28 12:00-12:00, 28 22:00-07:00"},
        {"whole days", event(days), "27-28, 28-29, 29-30"},
        {"a floating start", event("DTSTART:20260328T090000\nDURATION:PT1H\nRRULE:FREQ=DAILY;COUNT=2\n"),
         "28 09:00-10:00, 29 09:00-10:00"},
        {"endless since 1970, twice a week",
         event("DTSTART;VALUE=DATE:19700101\nRRULE:FREQ=WEEKLY;BYDAY=MO,TU;INTERVAL=2\n"),
         "23-24, 24-25, 06-07, 07-08"},
        {"as far as a day", event("DTSTART:20260327T080000Z\nRRULE:FREQ=DAILY;UNTIL=20260328\n"),
         "27 09:00-09:00, 28 09:00-09:00"},
        {"before the span", event("DTSTART:19690327T080000Z\nRRULE:FREQ=YEARLY;UNTIL=19800101T000000Z\n"),
         ""},
        {"begun before the span and not over",
         event("DTSTART;VALUE=DATE:20250101\nDTEND;VALUE=DATE:20260401\nRRULE:FREQ=YEARLY\n"),
         "01-01, 01-01"},
        // What is left out
        {"by time", event(daily + "EXDATE;TZID=Europe/Paris:20260328T090000,20260330T090000\n"),
         "27 09:00-10:00, 29 09:00-10:00"},
        {"by an instant", event(daily + "EXDATE:20260327T080000Z\nEXDATE:20260329T070000Z\n"),
         "28 09:00-10:00, 30 09:00-10:00"},
        {"by day", event(daily + "EXDATE;VALUE=DATE:20260327\n"),
         "28 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00"},
        {"a day by a time", event(days + "EXDATE:20260328T000000\n"), "27-28, 29-30"},
        {"nonsense", event(daily.chopped(1) + "\nEXDATE:tomorrow\nEXDATE:\n"),
         "27 09:00-10:00, 28 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00"},
        {"all", event(days + "EXDATE;VALUE=DATE:20260327,20260328,20260329\n"), ""},
        // What comes on top
        {"dates",
         event(daily + "RDATE;TZID=Europe/Paris:20260327T150000,20260328T090000\nRDATE:20260401T063000Z\n"
                       "RDATE;VALUE=DATE:20260410\n"),
         "27 09:00-10:00, 27 15:00-16:00, 28 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00, 01 08:30-09:30, "
         "10 09:00-10:00"},
        {"periods",
         event("DTSTART:20260327T080000Z\nDURATION:PT1H\nRDATE;VALUE=PERIOD:20260328T080000Z/PT2H,"
               "20260330T070000Z/20260330T073000Z\n"),
         "27 09:00-10:00, 28 09:00-11:00, 30 09:00-09:30"},
        {"dates that are left out or given twice",
         event(daily + "RDATE:20260401T070000Z,20260401T070000Z,20260402T070000Z\nEXDATE:20260402T070000Z\n"),
         "27 09:00-10:00, 28 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00, 01 09:00-10:00"},
        {"a second rule", event(daily + "RRULE:FREQ=DAILY;INTERVAL=3;COUNT=3\n"),
         "27 09:00-10:00, 28 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00, 02 09:00-10:00"},
        // What changes single dates
        {"a moved one, said in UTC",
         event(daily) + change("RECURRENCE-ID:20260328T080000Z\nDTSTART:20260328T130000Z\nDURATION:PT2H\n"),
         "27 09:00-10:00, 28 14:00-16:00*, 29 09:00-10:00, 30 09:00-10:00"},
        {"before the series in the file",
         change("RECURRENCE-ID;VALUE=DATE:20260328\nDTSTART;VALUE=DATE:20260405\n") + event(days),
         "27-28, 29-30, 05-06*"},
        {"named by its day",
         event(daily) + change("RECURRENCE-ID;VALUE=DATE:20260329\n"
                               "DTSTART:20260329T100000Z\n"),
         "27 09:00-10:00, 28 09:00-10:00, 29 12:00-12:00*, 30 09:00-10:00"},
        {"a cancelled one",
         event(daily) + change("RECURRENCE-ID:20260328T080000Z\nDTSTART:20260328T080000Z\n"
                               "STATUS:CANCELLED\n"),
         "27 09:00-10:00, 29 09:00-10:00, 30 09:00-10:00"},
        {"one without a series",
         change("RECURRENCE-ID:20260328T080000Z\nDTSTART:20260328T130000Z\nDURATION:PT2H\n"),
         "28 14:00-16:00*"},
        {"of a series that cannot be read",
         event("DTSTART:never\nRRULE:FREQ=DAILY\n") +
             change("RECURRENCE-ID:20260328T080000Z\nDTSTART:20260328T130000Z\n"),
         "28 14:00-14:00*"},
        {"a cancelled series", event(daily + "STATUS:CANCELLED\n"), ""},
        {"the newest of several changes of one date",
         event(daily) +
             change("RECURRENCE-ID:20260328T080000Z\nSEQUENCE:2\nDTSTAMP:20260101T000000Z\n"
                    "DTSTART:20260328T120000Z\n") +
             change("RECURRENCE-ID;TZID=Europe/Paris:20260328T090000\nSEQUENCE:2\nDTSTAMP:20260102T000000Z\n"
                    "DTSTART:20260328T130000Z\n") +
             change("RECURRENCE-ID:20260328T080000Z\nSEQUENCE:1\nDTSTAMP:20260103T000000Z\n"
                    "DTSTART:20260328T140000Z\n"),
         "27 09:00-10:00, 28 14:00-14:00*, 29 09:00-10:00, 30 09:00-10:00"},
        // What changes all later dates
        {"moved and longer, by the clock",
         event(daily) + change("RECURRENCE-ID;RANGE=THISANDFUTURE;TZID=Europe/Paris:20260328T090000\n"
                               "DTSTART;TZID=Europe/Paris:20260329T140000\nDURATION:PT2H\n"),
         "27 09:00-10:00, 29 14:00-16:00*, 30 14:00-16:00, 31 14:00-16:00"},
        {"several in a row, and one of a single date",
         event(daily.chopped(2) + "9\n") +
             change("RECURRENCE-ID;RANGE=THISANDFUTURE:20260331T070000Z\nDTSTART:20260331T090000Z\n") +
             change("RECURRENCE-ID;RANGE=THISANDFUTURE:20260328T080000Z\nDTSTART:20260328T070000Z\n") +
             change("RECURRENCE-ID:20260401T070000Z\nDTSTART:20260401T200000Z\n") +
             change("RECURRENCE-ID;RANGE=THISANDFUTURE:20260403T070000Z\nDTSTART:20260403T070000Z\n"
                    "STATUS:CANCELLED\n"),
         "27 09:00-10:00, 28 08:00-08:00*, 29 08:00-08:00, 30 08:00-08:00, 31 11:00-11:00*, "
         "01 22:00-22:00*, 02 11:00-11:00"},
        {"whole days to times",
         event(days) + change("RECURRENCE-ID;VALUE=DATE;RANGE=THISANDFUTURE:20260328\n"
                              "DTSTART;TZID=Europe/Paris:20260328T100000\nDURATION:PT1H\n"),
         "27-28, 28 10:00-11:00*, 29 10:00-11:00"},
        // What the clocks skip or show twice
        {"a skipped time that coincides with another",
         event("DTSTART;TZID=Europe/Paris:20260328T020000\nRRULE:FREQ=DAILY;BYHOUR=2,3;COUNT=5\n"),
         "28 02:00-02:00, 28 03:00-03:00, 29 03:00-03:00, 30 02:00-02:00, 30 03:00-03:00"},
        {"every hour of a short night",
         event("DTSTART;TZID=Europe/Paris:20260329T000000\nRRULE:FREQ=HOURLY;COUNT=5\n"),
         "29 00:00-00:00, 29 01:00-01:00, 29 03:00-03:00, 29 04:00-04:00, 29 05:00-05:00"},
        {"an extra date, another rule and an exception at a skipped time",
         event("DTSTART;TZID=Europe/Paris:20260328T023000\nRRULE:FREQ=DAILY;COUNT=3\n"
               "RRULE:FREQ=DAILY;BYHOUR=3;COUNT=3\nRDATE:20260329T013000Z\n") +
             change("RECURRENCE-ID:20260330T003000Z\nDTSTART:20260330T013000Z\nSTATUS:CANCELLED\n"),
         "28 02:30-02:30, 28 03:30-03:30, 29 03:30-03:30"},
        {"left out by the moment",
         event("DTSTART;TZID=Europe/Paris:20260328T023000\nRRULE:FREQ=DAILY;COUNT=3\n"
               "EXDATE:20260329T013000Z\n"),
         "28 02:30-02:30, 30 02:30-02:30"},
        {"rules of exceptions",
         event(daily + "EXRULE:FREQ=WEEKLY;BYDAY=SA\nEXRULE:FREQ=DAILY;INTERVAL=3;COUNT=2\n"),
         "29 09:00-10:00"},
        // Rules that make no sense: the start alone
        {"a negative count", event(daily.chopped(8) + "COUNT=-1\n"), "27 09:00-10:00"},
        {"no such weekday", event("DTSTART;VALUE=DATE:20260327\nRRULE:FREQ=WEEKLY;BYDAY=XX\n"), "27-28"},
        {"no such day", event("DTSTART;VALUE=DATE:20260327\nRRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30\n"),
         "27-28"},
        {"nothing", event("DTSTART;VALUE=DATE:20260327\nRRULE:\n"), "27-28"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(occurrencesIn(each.components), each.expected) << each.what;
}

TEST(EventSeriesTest, FindsOccurrencesFarFromTheStartAtOnce) {
    // Two thousand million dates lie before these.
    const auto series = seriesIn(event("DTSTART:19600101T000000Z\nRRULE:FREQ=SECONDLY\n"));
    int count = 0;
    const Instant noon = at("UTC", {2026, 3, 27}, {12, 0});
    series.at(0).forEachRecurring({noon, noon + 2s, noon}, [&](const EventSeries::Date& date) {
        EXPECT_EQ(date.interval.start, noon + std::chrono::seconds(count++));
        return true;
    });
    EXPECT_EQ(count, 3);
    EXPECT_EQ(series[0].occurrence(noon)->data->startDate, noon);
    EXPECT_FALSE(series[0].occurrence(noon + 500ms).has_value());
    EXPECT_EQ(series[0].recurring()->end, std::nullopt);
}

TEST(EventSeriesTest, BoundsWhatARuleCanGive) {
    const std::pair<const char*, std::optional<Instant>> cases[] = {
        {"FREQ=DAILY", std::nullopt},
        {"FREQ=DAILY;COUNT=3", at("UTC", {2026, 3, 29}, {10, 0})},
        {"FREQ=SECONDLY;COUNT=2000000000",
         at("UTC", {2026, 3, 27}, {10, 0}) + std::chrono::seconds(1'999'999'999)},
        {"FREQ=MONTHLY;COUNT=2000000000", std::nullopt},
    };
    for (const auto& [rule, end] : cases) {
        const auto series =
            seriesIn(event("DTSTART:20260327T090000Z\nDURATION:PT1H\nRRULE:" + QByteArray(rule) + "\n"));
        ASSERT_TRUE(series.at(0).recurring().has_value()) << rule;
        EXPECT_EQ(series[0].recurring()->start, at("UTC", {2026, 3, 27}, {9, 0})) << rule;
        EXPECT_EQ(series[0].recurring()->end, end) << rule;
    }
}

TEST(EventSeriesTest, KnowsAnOccurrenceByTheStartThatItsSeriesGivesIt) {
    const auto series =
        seriesIn(event("DTSTART;TZID=Europe/Paris:20260328T023000\nDURATION:PT1H\n"
                       "RRULE:FREQ=DAILY\nRDATE:20260401T150000Z\nEXDATE:20260330T003000Z\n") +
                 "BEGIN:VEVENT\nUID:1\nRECURRENCE-ID;TZID=Europe/Paris:20260331T023000\n"
                 "DTSTART:20260331T150000Z\nEND:VEVENT\n");
    const auto timeOf = [&](const char* zone, QDate day, QTime time) {
        const auto found = series.at(0).occurrence(at(zone, day, time));
        return found ? found->time.day.toString("MMdd ") + found->time.time.toString("HH:mm") +
                           (found->change ? " changed" : "")
                     : QString();
    };
    EXPECT_EQ(timeOf("Europe/Paris", {2026, 3, 28}, {2, 30}), "0328 02:30");
    // A local time that the clock skips on this day is still a date of the series.
    EXPECT_EQ(timeOf("UTC", {2026, 3, 29}, {1, 30}), "0329 02:30");
    EXPECT_EQ(timeOf("UTC", {2026, 3, 30}, {0, 30}), "");
    EXPECT_EQ(timeOf("UTC", {2026, 3, 31}, {0, 30}), "0331 02:30 changed");
    EXPECT_EQ(timeOf("UTC", {2026, 3, 31}, {15, 0}), "");
    EXPECT_EQ(timeOf("UTC", {2026, 4, 1}, {15, 0}), "0401 17:00");
    EXPECT_EQ(timeOf("UTC", {2020, 1, 1}, {1, 30}), "");
    EXPECT_FALSE(series[0].occurrence(std::nullopt).has_value());
}

TEST(EventSeriesTest, MovesWithThePersonsZone) {
    const auto series = seriesIn(event("DTSTART;VALUE=DATE:20260327\nRRULE:FREQ=DAILY\n"));
    const EventSeries elsewhere(series.at(0).item(), "1", "calendar", *TimeZone::named("Asia/Tokyo"));
    EXPECT_EQ(elsewhere.first()->data->startDate, at("Asia/Tokyo", {2026, 3, 27}));
    EXPECT_EQ(series[0].first()->data->startDate, at("Europe/Paris", {2026, 3, 27}));
}

}  // namespace
}  // namespace kestrant
