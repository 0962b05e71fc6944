#include "eventkit/icalendar/TimeZoneText.h"

#include "eventkit/icalendar/DateValue.h"

#include <gtest/gtest.h>

namespace kestrant::icalendar {
namespace {

TEST(TimeZoneTextTest, DescribesAZoneByItsYearlyChanges) {
    const auto paris = timeZoneDefinition("Europe/Paris", 2025, "\r\n");
    ASSERT_TRUE(paris.has_value());
    const QByteArray text = paris->view().text();
    EXPECT_TRUE(text.contains(
        "BEGIN:DAYLIGHT\r\nDTSTART:20250330T020000\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n"
        "TZNAME:CEST\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nEND:DAYLIGHT\r\n"));
    EXPECT_TRUE(text.contains(
        "BEGIN:STANDARD\r\nDTSTART:20251026T030000\r\nTZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\n"
        "TZNAME:CET\r\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nEND:STANDARD\r\n"));
    EXPECT_TRUE(
        timeZoneDefinition("America/New_York", 2025, "\n")->view().text().contains("BYMONTH=3;BYDAY=2SU"));
    EXPECT_TRUE(timeZoneDefinition("Asia/Kolkata", 2025, "\n")
                    ->view()
                    .text()
                    .contains("DTSTART:19700101T000000\nTZOFFSETFROM:+0530\nTZOFFSETTO:+0530\n"));
    EXPECT_FALSE(timeZoneDefinition("Middle/Earth", 2025, "\n").has_value());
}

/// The zone in which a file with this definition reads a time on a day.
std::optional<QByteArray> zoneOn(QDate day, const QByteArray& name, const QByteArray& observances) {
    const auto document = Document::parse("BEGIN:VCALENDAR\nBEGIN:VTIMEZONE\nTZID:" + name + "\n" +
                                          observances + "END:VTIMEZONE\nEND:VCALENDAR\n");
    EXPECT_TRUE(document.has_value());
    return zoneNamed(name, *document, day);
}

QByteArray observance(const char* kind, const char* start, const char* from, const char* to,
                      const char* rule = "") {
    return "BEGIN:" + QByteArray(kind) + "\nDTSTART:" + start + "\nTZOFFSETFROM:" + from +
           "\nTZOFFSETTO:" + to + "\n" + rule + "END:" + kind + "\n";
}

TEST(TimeZoneTextTest, RecognisesAZoneByWhatItsClocksDo) {
    const QByteArray european = observance("STANDARD", "16011028T030000", "+0200", "+0100",
                                           "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\n") +
                                observance("DAYLIGHT", "16010325T020000", "+0100", "+0200",
                                           "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3\n");
    const QByteArray ownRule =
        observance("STANDARD", "20000601T000000", "+0230", "+0200", "RRULE:FREQ=YEARLY\n") +
        observance("DAYLIGHT", "20000501T000000", "+0200", "+0230", "RRULE:FREQ=YEARLY\n");
    const QByteArray givenUp = observance("DAYLIGHT", "19800401T000000", "+0300", "+0400",
                                          "RRULE:FREQ=YEARLY;UNTIL=19900331T210000Z\n") +
                               observance("STANDARD", "19801001T000000", "+0400", "+0300",
                                          "RRULE:FREQ=YEARLY;UNTIL=19910930T200000Z\n");
    struct Case {
        const char* what;
        QDate day;
        QByteArray name;
        QByteArray observances;
        std::optional<QByteArray> expected;
    };
    const Case cases[] = {
        {"mentioned", {2026, 7, 1}, "(UTC+01:00) Berlin, Bern, Rome", european, "Europe/Berlin"},
        {"of a name that says nothing", {2026, 1, 1}, "Customized Time Zone", european, "Africa/Ceuta"},
        {"by dates alone",
         {2026, 7, 1},
         "New_York time",
         observance("DAYLIGHT", "20260308T020000", "-0500", "-0400") +
             observance("STANDARD", "20261101T020000", "-0400", "-0500"),
         "America/New_York"},
        {"never changed",
         {2026, 7, 1},
         "Office",
         observance("STANDARD", "19700101T000000", "+0530", "+0530"),
         "UTC+05:30"},
        {"at zero",
         {2026, 7, 1},
         "Office",
         observance("STANDARD", "19700101T000000", "+0000", "+0000"),
         "UTC"},
        {"not changed any more", {2026, 7, 1}, "Office", givenUp, "UTC+03:00"},
        {"as nowhere, before", {2026, 4, 1}, "Office", ownRule, "UTC+02:00"},
        {"as nowhere, during", {2026, 5, 10}, "Office", ownRule, "UTC+02:30"},
        {"as nowhere, after", {2026, 6, 10}, "Office", ownRule, "UTC+02:00"},
        {"by itself",
         {2026, 7, 1},
         "Loop",
         observance("STANDARD", "x", "+0100", "+0100")
             .replace("DTSTART:x", "DTSTART;TZID=Loop:20000101T000000"),
         "UTC+01:00"},
        {"nonsense", {2026, 7, 1}, "Office", observance("STANDARD", "x", "one", "two"), std::nullopt},
        {"nothing", {2026, 7, 1}, "Office", "", std::nullopt},
    };
    for (const Case& each : cases)
        EXPECT_EQ(zoneOn(each.day, each.name, each.observances), each.expected) << each.what;
}

TEST(TimeZoneTextTest, ReadsTimesOfDescribedZones) {
    const auto document = Document::parse("BEGIN:VCALENDAR\nBEGIN:VTIMEZONE\nTZID:Office\n" +
                                          observance("STANDARD", "19700101T000000", "+0545", "+0545") +
                                          "END:VTIMEZONE\nEND:VCALENDAR\n");
    const Property property = Property::parse("DTSTART;TZID=Office:20260327T090000");
    const auto date = readDate(property, *document);
    ASSERT_TRUE(date.has_value());
    const ZoneCalendar paris(QTimeZone("Europe/Paris"));
    EXPECT_EQ(toIso8601(*paris.instantFrom(*date)), "2026-03-27T03:15:00Z");
    Property moved = property;
    writeDate(moved, DateComponents::fromDateTime({2026, 4, 1}, {9, 0}, date->timeZone), *document);
    EXPECT_EQ(moved.toContent(), "DTSTART;TZID=Office:20260401T090000");
}

}  // namespace
}  // namespace kestrant::icalendar
