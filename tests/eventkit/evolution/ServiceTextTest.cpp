#include "eventkit/evolution/ServiceText.h"

#include <gmock/gmock.h>

namespace kestrant::evolution {
namespace {

using icalendar::Document;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

QByteArray event(const QByteArray& more) {
    return "BEGIN:VEVENT\r\nUID:u\r\n" + more + "END:VEVENT\r\n";
}

Document file(std::vector<QByteArray> components) {
    return *Document::parse(fileOf(std::move(components), {}));
}

const QByteArray whole = event("RRULE:FREQ=DAILY\r\nX-EVOLUTION-CALDAV-ETAG:one\r\n");
const QByteArray first = event("RECURRENCE-ID:20260101T090000Z\r\nX-EVOLUTION-CALDAV-ETAG:one\r\n");
const QByteArray second = event("RECURRENCE-ID:20260102T090000Z\r\nX-EVOLUTION-CALDAV-ETAG:one\r\n");

TEST(ServiceText, MakesTheSameFileOfComponentsInWhateverOrder) {
    EXPECT_EQ(fileOf({second, whole, first}, {}), fileOf({whole, first, second}, {}));
}

TEST(ServiceText, WritesTheComponentsThatDifferAndRemovesThoseThatAreGone) {
    const QByteArray changed = event("RECURRENCE-ID:20260101T090000Z\r\nSUMMARY:x\r\n"
                                     "X-EVOLUTION-CALDAV-ETAG:old\r\n");
    const ServiceChange change =
        changeBetween(file({whole, first, second}), file({whole, changed}), "VEVENT");
    // The series, too, since the service leaves out the date that is removed.
    ASSERT_THAT(change.written, SizeIs(2));
    EXPECT_EQ(change.written[0].date, "");
    EXPECT_EQ(change.written[1].date, "20260101T090000Z");
    EXPECT_TRUE(change.written[1].text.contains("SUMMARY:x"));
    // What the service goes by when it compares with the server is never taken back.
    EXPECT_TRUE(change.written[1].text.contains("ETAG:one"));
    ASSERT_THAT(change.removed, SizeIs(1));
    EXPECT_EQ(change.removed[0].text, second);
}

TEST(ServiceText, GivesNewDatesTheVersionThatTheServerKnows) {
    const QByteArray added = event("RECURRENCE-ID:20260103T090000Z\r\n");
    const ServiceChange change = changeBetween(file({whole}), file({whole, added}), "VEVENT");
    ASSERT_THAT(change.written, SizeIs(1));
    EXPECT_TRUE(change.written[0].text.contains("ETAG:one"));
    EXPECT_THAT(change.removed, IsEmpty());
}

TEST(ServiceText, FindsTheUidWhereverAndHoweverItIsWritten) {
    const QByteArray alarm = "BEGIN:VALARM\r\nUID:alarm\r\nEND:VALARM\r\n";
    EXPECT_EQ(uidOf("BEGIN:VTODO\r\nSUMMARY:x\r\nUID:u\r\n" + alarm + "END:VTODO\r\n"), "u");
    EXPECT_EQ(uidOf("BEGIN:VTODO\r\n" + alarm + "UID:u\r\nEND:VTODO\r\n"), "u");
    EXPECT_EQ(uidOf("BEGIN:VTODO\r\nUID:long\r\n er\r\nEND:VTODO\r\n"), "longer");
    EXPECT_EQ(uidOf("BEGIN:VTODO\r\nUID;X-A=b:u\r\nEND:VTODO\r\n"), "u");
    EXPECT_EQ(uidOf("BEGIN:VTODO\r\n" + alarm + "END:VTODO\r\n"), "");
}

TEST(ServiceText, HasBirthdaysOnALeapDayOnceAYear) {
    const QByteArray leapDay = event("DTSTART;VALUE=DATE:19920229\r\nRRULE:FREQ=YEARLY;BYMONTHDAY=-1\r\n");
    EXPECT_TRUE(yearlyBirthday(leapDay).contains("\r\nRRULE:FREQ=YEARLY;BYMONTHDAY=-1;BYMONTH=2\r\n"));
    const QByteArray other = event("DTSTART;VALUE=DATE:19801124\r\nRRULE:FREQ=YEARLY\r\n");
    EXPECT_EQ(yearlyBirthday(other), other);
}

TEST(ServiceText, AsksForZonesThatMeanNothingByTheirNames) {
    EXPECT_THAT(obscureZones("DTSTART;TZID=Europe/Paris:20260101T000000\r\n"
                             "DUE;TZID=/freeassociation.sourceforge.net/Europe/Berlin:20260101T000000\r\n"
                             "RDATE;TZID=\"Pacific Standard Time\":20260101T000000\r\n"
                             "EXDATE;TZID=\"My; zone\":20260101T000000\r\n"
                             "DTEND;VALUE=DATE-TIME;TZID=Office:20260101T000000\r\n"),
                ElementsAre("My; zone", "Office"));
}

}  // namespace
}  // namespace kestrant::evolution
