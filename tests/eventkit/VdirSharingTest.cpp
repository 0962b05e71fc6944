#include "VdirFolder.h"
#include "eventkit/items/Journal.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "foundation/FileLock.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <random>

namespace kestrant {
namespace {

using items::Journal;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using vdir::VdirDatabase;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});
const QString note = QStringLiteral(".kestrant-999999999-0.journal");

class VdirSharingTest : public ::testing::Test {
  protected:
    [[nodiscard]] static std::vector<QString> titles(const VdirDatabase& database) {
        std::vector<QString> result;
        for (const items::Entry& entry : database.snapshot()->reminders)
            result.push_back(entry.data->title);
        std::sort(result.begin(), result.end());
        return result;
    }
    void refresh() { (void)database.refresh({.everything = true}, paris); }

    VdirFolder folder;
    VdirDatabase database{folder.nativeRoot()};
};

TEST_F(VdirSharingTest, WhatEndedBetweenItsTwoStepsIsTakenBackByWhoeverReads) {
    const QByteArray source = VdirFolder::reminder("a", "source");
    const QByteArray changed = VdirFolder::reminder("a", "changed");
    const QByteArray made = VdirFolder::reminder("b", "made");
    const QByteArray touched = VdirFolder::reminder("b", "touched");
    const QByteArray noteOf[] = {
        Journal{
            {{{"work", "b.ics"}, items::digestOf(made)}}, {"list", "a.ics"}, items::digestOf(source), false}
            .text(),
        Journal{
            {{{"work", "b.ics"}, items::digestOf(made)}}, {"list", "a.ics"}, items::digestOf(source), true}
            .text(),
        Journal{{{{"..", "b.ics"}, items::digestOf(made)}}, {"list", "a.ics"}, items::digestOf(source), true}
            .text(),
    };
    const struct {
        const char* what;
        QByteArray note;
        std::optional<QByteArray> source, made;
        std::vector<QString> left;
        bool noteStays = false;
    } cases[] = {
        {"rewriting: before the first step", noteOf[0], source, {}, {"source"}},
        {"rewriting: between the steps", noteOf[0], source, made, {"source"}},
        {"rewriting: after the second step", noteOf[0], changed, made, {"changed", "made"}},
        {"rewriting: the made one was edited", noteOf[0], source, touched, {"source", "touched"}},
        {"removing: between the steps", noteOf[1], source, made, {"source"}},
        {"removing: between the steps, and then edited", noteOf[1], changed, made, {"changed"}},
        {"removing: after the second step", noteOf[1], {}, made, {"made"}},
        {"about something elsewhere", noteOf[2], source, made, {"made", "source"}, true},
        {"nobody's note", "{", source, made, {"made", "source"}, true},
    };
    for (const auto& each : cases) {
        folder.put("list/displayname", "List");
        folder.put("work/displayname", "Work");
        for (const auto& [path, text] :
             {std::pair("list/a.ics", each.source), std::pair("work/b.ics", each.made)}) {
            if (text)
                folder.put(path, *text);
        }
        folder.put(note, each.note);
        {
            // A journal whose writer is running is left to the writer.
            const auto writer = FileLock::ofFolder(folder.path("list"), FileLock::Waiting::none);
            ASSERT_TRUE(writer.has_value());
            ASSERT_FALSE(database.open(paris).has_value());
            EXPECT_TRUE(folder.has(note)) << each.what;
        }
        refresh();
        EXPECT_EQ(titles(database), each.left) << each.what;
        EXPECT_EQ(folder.has(note), each.noteStays) << each.what;
        EXPECT_THAT(database.snapshot()->problems, IsEmpty());
        folder.removeAll();
    }
}

TEST_F(VdirSharingTest, WhatCannotBeReadIsNamedAndWhatIsKnownOfItStays) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "a"));
    folder.put("list/b.ics", VdirFolder::reminder("b", "b"));
    folder.put("work/c.ics", VdirFolder::reminder("c", "c"));
    for (const char* place : {"", "list", "work"})
        ASSERT_EQ(::chmod(QFile::encodeName(folder.path(place)).constData(), 0777), 0);
    ASSERT_FALSE(database.open(paris).has_value());
    for (const char* hidden : {"", "list", "list/b.ics"}) {
        const QByteArray path = QFile::encodeName(folder.path(hidden));
        struct stat status = {};
        ASSERT_EQ(::stat(path.constData(), &status), 0);
        {
            const WithoutPrivileges unprivileged(folder);
            ASSERT_EQ(::seteuid(0), 0);
            ASSERT_EQ(::chmod(path.constData(), 0), 0);
            ASSERT_EQ(::seteuid(65534), 0);
            (void)database.refresh({.everything = true, .files = {{"list", {"b.ics"}}}}, paris);
            EXPECT_THAT(titles(database), ElementsAre("a", "b", "c")) << hidden;
            ASSERT_EQ(database.snapshot()->problems.size(), 1U) << hidden;
            EXPECT_TRUE(database.snapshot()->problems.front().english.contains(QString::fromLatin1(hidden)));
            VdirDatabase another(folder.nativeRoot());
            EXPECT_EQ(another.open(paris).has_value(), *hidden == 0) << hidden;
        }
        ASSERT_EQ(::chmod(path.constData(), status.st_mode & 07777), 0);
        refresh();
        EXPECT_THAT(titles(database), ElementsAre("a", "b", "c"));
        EXPECT_THAT(database.snapshot()->problems, IsEmpty()) << hidden;
        // Once the folder can be read again, deleted files disappear.
        folder.put("list/d.ics", VdirFolder::reminder("d", "d"));
        refresh();
        EXPECT_EQ(titles(database).size(), 4U);
        folder.remove("list/d.ics");
        refresh();
    }
}

TEST_F(VdirSharingTest, AnOccurrenceIsCompletedByOneOfTwo) {
    folder.put("list/s.ics",
               VdirFolder::reminder("s", "s", "DUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n"));
    VdirDatabase another(folder.nativeRoot());
    ASSERT_FALSE(database.open(paris).has_value());
    ASSERT_FALSE(another.open(paris).has_value());
    const auto complete = [](VdirDatabase& of) {
        const auto base = of.snapshot()->reminders.value("s").data;
        EKReminderData edited = *base;
        edited.isCompleted = true;
        return of.save(base, edited, now, paris);
    };
    EXPECT_TRUE(complete(database).has_value());
    EXPECT_EQ(complete(another).error().code, EKError::Code::conflict);
    EXPECT_EQ(folder.names("list").size(), 2U);
    EXPECT_TRUE(folder.content("list/s.ics").contains("DUE;VALUE=DATE:20260328"));
    EXPECT_TRUE(complete(another).has_value()) << "the next one";
    EXPECT_EQ(folder.names("list").size(), 3U);
    EXPECT_EQ(folder.names().size(), 1U) << "no note stays";
}

TEST_F(VdirSharingTest, ReadsOnlyWhatChanged) {
    for (int i = 0; i < 20; ++i)
        folder.put(QString("list/%1.ics").arg(i), VdirFolder::reminder(QByteArray::number(i), "x"));
    ASSERT_FALSE(database.open(paris).has_value());
    folder.put("list/3.ics", VdirFolder::reminder("3", "told"));
    folder.put("list/4.ics", VdirFolder::reminder("4", "not told"));
    folder.remove("list/5.ics");
    folder.put("new/a.ics", VdirFolder::reminder("a", "new"));
    EXPECT_TRUE(database.refresh({.files = {{"list", {"3.ics", "5.ics"}}}}, paris));
    EXPECT_EQ(database.snapshot()->reminders.value("3").data->title, "told");
    EXPECT_EQ(database.snapshot()->reminders.value("4").data->title, "x");
    EXPECT_EQ(titles(database).size(), 19U);
    EXPECT_TRUE(database.refresh({.collections = true}, paris));
    EXPECT_EQ(titles(database).size(), 20U);
    EXPECT_TRUE(database.refresh({.files = {{"list", {QByteArray()}}}}, paris));
    EXPECT_EQ(database.snapshot()->reminders.value("4").data->title, "not told");
    EXPECT_FALSE(database.refresh({.files = {{"list", {"3.ics", "displayname"}}, {"a file", {}}}}, paris));
}

/// Everything that a database shows, as lines.
std::vector<QString> shown(VdirDatabase& database) {
    std::vector<QString> result;
    const auto& snapshot = *database.snapshot();
    for (const items::Entry& entry : snapshot.reminders)
        result.push_back(entry.data->calendarItemIdentifier + '|' + entry.data->title + '|' +
                         QString::fromLatin1(entry.file) + '|' + entry.data->calendarIdentifier);
    for (const items::EventEntry& entry : snapshot.events)
        result.push_back(entry.event.identifier() + '|' + QString::fromLatin1(entry.file));
    const auto found =
        database.events({now - std::chrono::hours(24 * 30), now + std::chrono::hours(24 * 30), {}}, now);
    for (const auto& event : found.events)
        result.push_back(QStringLiteral("event|%1|%2")
                             .arg(event->eventIdentifier)
                             .arg(secondsSince1970(event->startDate)));
    for (const EKCalendar& calendar : snapshot.calendars)
        result.push_back(QStringLiteral("calendar|%1|%2%3")
                             .arg(calendar.calendarIdentifier)
                             .arg(calendar.allowsReminders)
                             .arg(calendar.allowsEvents));
    for (const TextPair& problem : snapshot.problems)
        result.push_back(problem.english);
    result.push_back(snapshot.defaultForReminders + '|' + snapshot.defaultForEvents);
    std::sort(result.begin(), result.end());
    return result;
}

TEST_F(VdirSharingTest, ExchangingWhatChangedComesToTheSameAsReadingEverything) {
    for (const char* list : {"list/displayname", "work/displayname"})
        folder.put(list, "x");
    ASSERT_FALSE(database.open(paris).has_value());
    std::mt19937 random(1);
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    for (int step = 0; step < 400; ++step) {
        const QByteArray list = below(2) == 0 ? "list" : "work";
        const QByteArray name = QByteArray::number(below(6)) + ".ics";
        const QString path = QString::fromLatin1(list + '/' + name);
        // Most files get a UID of their own, some the UID of another file.
        const QByteArray uid = below(40) == 0 ? QByteArray("shared") : list + name;
        const QByteArray title = QByteArray::number(step);
        const auto base = database.snapshot()->reminders.value(QString::fromLatin1(list + name)).data;
        switch (below(8)) {
        case 0:
            (void)QFile::remove(folder.path(path));
            break;
        case 1:
            folder.put(path, VdirFolder::event(uid));
            break;
        case 2:
            folder.put(path, VdirFolder::event(uid).replace(
                                 "END:VEVENT", "RRULE:FREQ=DAILY;COUNT=" + QByteArray::number(2 + below(5)) +
                                                   "\r\nEND:VEVENT"));
            break;
        case 3:
            folder.put(path, below(4) == 0 ? QByteArray("damaged") : VdirFolder::reminder(uid, title));
            break;
        case 4:
        case 5:
            if (base) {
                EKReminderData edited = *base;
                edited.title = QString::fromLatin1(title);
                (void)database.save(base, edited, now, paris);
            }
            break;
        case 6:
            if (base)
                (void)database.remove(base->calendarItemIdentifier, paris);
            break;
        default:
            folder.put(path, VdirFolder::reminder(uid, title));
        }
        (void)database.refresh({.files = {{list, {name}}}}, paris);
        VdirDatabase fresh(folder.nativeRoot());
        ASSERT_FALSE(fresh.open(paris).has_value());
        ASSERT_EQ(shown(database), shown(fresh)) << "step " << step;
    }
}

}  // namespace
}  // namespace kestrant
