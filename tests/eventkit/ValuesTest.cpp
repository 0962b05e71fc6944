#include "eventkit/icalendar/DateValue.h"
#include "eventkit/model/EKTypes.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using namespace icalendar;

TEST(ColorTest, ReadsWhatOthersWriteAndWritesOneForm) {
    EXPECT_EQ(Color::parse(u"#FF8000"), (Color{255, 128, 0}));
    EXPECT_EQ(Color::parse(u"#00fb00ff"), (Color{0, 251, 0}));
    for (const char16_t* text : {u"None", u"", u"#FFF", u"FF8000", u"#GG0000", u"#FF80001", u"#FF8000\n"})
        EXPECT_EQ(Color::parse(text), std::nullopt);
    EXPECT_EQ((Color{1, 2, 255}).toString(), "#0102FF");
}

std::optional<DateComponents> read(const char* line) {
    const auto document =
        Document::parse("BEGIN:VCALENDAR\nBEGIN:VTIMEZONE\nTZID:Office\nX-LIC-LOCATION:Europe/Paris\n"
                        "END:VTIMEZONE\nEND:VCALENDAR\n");
    return readDate(Property::parse(line), *document);
}

TEST(DateValueTest, ReadsEveryFormOfADate) {
    const auto timed = [](const char* zone) {
        return DateComponents::fromDateTime({2026, 3, 27}, {14, 30}, TimeZone::named(zone));
    };
    EXPECT_EQ(read("DUE;VALUE=DATE:20260327"), DateComponents::fromDate({2026, 3, 27}));
    EXPECT_EQ(read("DUE:20260327"), DateComponents::fromDate({2026, 3, 27}));
    EXPECT_EQ(read("DUE;VALUE=DATE:20260327T143000"), DateComponents::fromDate({2026, 3, 27}));
    EXPECT_EQ(read("DUE:20260327T143000"), timed(""));
    EXPECT_EQ(read("DUE:20260327T143000Z"), timed("UTC"));
    EXPECT_EQ(read("DUE:2026-03-27T14:30:00Z"), timed("UTC"));
    EXPECT_EQ(read("DUE;TZID=Europe/Berlin:20260327T143000"), timed("Europe/Berlin"));
    EXPECT_EQ(read("DUE;TZID=\"Europe/Berlin\":20260327T143000"), timed("Europe/Berlin"));
    EXPECT_EQ(read("DUE;TZID=/vendor.example/20070129/Europe/Berlin:20260327T143000"),
              timed("Europe/Berlin"));
    EXPECT_EQ(read("DUE;TZID=America/Argentina/Ushuaia:20260327T143000"), timed("America/Argentina/Ushuaia"));
    EXPECT_EQ(read("DUE;TZID=Pacific Standard Time:20260327T143000"), timed("America/Los_Angeles"));
    EXPECT_EQ(read("DUE;TZID=GMT Standard Time:20260327T143000"), timed("Europe/London"));
    EXPECT_EQ(read("DUE;TZID=Office:20260327T143000"), timed("Europe/Paris"));
    EXPECT_EQ(read("DUE;TZID=Middle/Earth:20260327T143000"), timed(""));
    EXPECT_EQ(read("DUE;VALUE=DATE:00010101"), DateComponents::fromDate({1, 1, 1}));
    EXPECT_EQ(read("DUE;VALUE=DATE:99991231"), DateComponents::fromDate({9999, 12, 31}));
    for (const char* line : {"DUE:", "DUE:soon", "DUE:20260230", "DUE:20260327T250000", "DUE:00000101",
                             "DUE:2026", "DUE:20260327T1430", "DUE:202603\xC3\xA9"})
        EXPECT_EQ(read(line), std::nullopt) << line;
}

TEST(DateValueTest, WritesADateAndKeepsTheRest) {
    const auto document = Document::make();
    const auto written = [&](const char* line, const DateComponents& date) {
        Property property = Property::parse(line);
        writeDate(property, date, document);
        return property.toContent();
    };
    EXPECT_EQ(written("DUE;X-A=1;TZID=Europe/Paris:20260101T000000", DateComponents::fromDate({2026, 3, 7})),
              "DUE;X-A=1;VALUE=DATE:20260307");
    EXPECT_EQ(written("DUE;VALUE=DATE:20260101", DateComponents::fromDateTime({2026, 3, 7}, {9, 5})),
              "DUE:20260307T090500");
    EXPECT_EQ(written("DUE:20260101T000000Z",
                      DateComponents::fromDateTime({2026, 3, 7}, {9, 5}, TimeZone::named("UTC"))),
              "DUE:20260307T090500Z");
    EXPECT_EQ(
        written("DUE:", DateComponents::fromDateTime({2026, 3, 7}, {9, 5}, TimeZone::named("Asia/Tokyo"))),
        "DUE;TZID=Asia/Tokyo:20260307T090500");
    EXPECT_EQ(written("DUE;TZID=W. Europe Standard Time:20260101T000000",
                      DateComponents::fromDateTime({2026, 3, 7}, {9, 5}, TimeZone::named("Europe/Berlin"))),
              "DUE;TZID=W. Europe Standard Time:20260307T090500");
}

TEST(DurationTest, ReadsAndWritesDurations) {
    struct Case {
        const char* text;
        int days;
        qint64 seconds;
    };
    for (const Case& each :
         {Case{"PT15M", 0, 900}, Case{"-PT1H30M", 0, -5400}, Case{"P1D", 1, 0}, Case{"+P2W", 14, 0},
          Case{"-P1DT2H3M4S", -1, -7384}, Case{"-pt15m", 0, -900}, Case{"PT0S", 0, 0}}) {
        const auto duration = readDuration(each.text);
        ASSERT_TRUE(duration.has_value()) << each.text;
        EXPECT_EQ(duration->days, each.days) << each.text;
        EXPECT_EQ(duration->seconds, each.seconds) << each.text;
    }
    for (const char* text :
         {"", "P", "PT", "15M", "P1H", "PT1D", "PT15", "P-1D", "PT99999999999S", "20260101T000000Z"})
        EXPECT_FALSE(readDuration(text).has_value()) << text;
    EXPECT_EQ(durationText(-900), "-PT15M");
    EXPECT_EQ(durationText(172'800), "P2D");
    EXPECT_EQ(durationText(0), "PT0S");
    EXPECT_EQ(durationText(3601), "PT3601S");
}

}  // namespace
}  // namespace kestrant
