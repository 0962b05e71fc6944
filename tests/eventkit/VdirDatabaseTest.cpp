#include "eventkit/vdir/VdirDatabase.h"

#include "VdirFolder.h"
#include "eventkit/vdir/VdirFiles.h"
#include "support/DiskLimit.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using vdir::VdirDatabase;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});

class VdirDatabaseTest : public ::testing::Test {
  protected:
    void open() { ASSERT_FALSE(database.open(paris).has_value()); }
    void refresh() { (void)database.refresh({.everything = true}, paris); }
    [[nodiscard]] std::vector<QString> titles() const {
        std::vector<QString> result;
        for (const items::Entry& entry : database.snapshot()->reminders)
            result.push_back(entry.data->title);
        std::sort(result.begin(), result.end());
        return result;
    }
    [[nodiscard]] std::shared_ptr<const EKReminderData> titled(const QString& title) const {
        for (const items::Entry& entry : database.snapshot()->reminders) {
            if (entry.data->title == title)
                return entry.data;
        }
        ADD_FAILURE() << "no reminder is called " << qPrintable(title);
        return std::make_shared<EKReminderData>();
    }
    template <typename Change>
    tl::expected<EKSaveResult, EKError> edit(const std::shared_ptr<const EKReminderData>& base,
                                             Change change) {
        EKReminderData edited = *base;
        change(edited);
        return database.save(base, edited, now, paris);
    }
    template <typename Change>
    tl::expected<EKSaveResult, EKError> edit(const QString& title, Change change) {
        return edit(titled(title), change);
    }

    VdirFolder folder;
    VdirDatabase database{folder.nativeRoot()};
};

constexpr auto rename(const char* title) {
    return [title](EKReminderData& data) { data.title = title; };
}

constexpr auto complete = [](EKReminderData& data) { data.isCompleted = true; };

TEST_F(VdirDatabaseTest, LeavesDamagedFilesAloneAndNamesThem) {
    const QByteArray whole = VdirFolder::reminder("whole", "whole");
    const std::pair<const char*, QByteArray> damaged[] = {
        {"binary.ics", QByteArray("\x7F\x45\x4C\x46\0\0\xFF", 7)},
        {"empty.ics", ""},
        {"other.ics", "BEGIN:VCARD\r\nEND:VCARD\r\n"},
        {"torn-event.ics", VdirFolder::event("e").first(90)},
        {"torn.ics", whole.first(80)},
    };
    folder.put("list/whole.ics", whole);
    for (const auto& [name, text] : damaged)
        folder.put(QString("list/") + name, text);
    folder.put("list/huge.ics", "");
    ASSERT_EQ(::truncate(QFile::encodeName(folder.path("list/huge.ics")).constData(), 50 * 1024 * 1024), 0);
    ASSERT_EQ(::symlink("nowhere.ics", QFile::encodeName(folder.path("list/dangling.ics")).constData()), 0);
    ASSERT_EQ(::mkfifo(QFile::encodeName(folder.path("list/pipe.ics")).constData(), 0644), 0);
    ASSERT_TRUE(QDir().mkpath(folder.path("list/folder.ics")));
    open();

    EXPECT_THAT(titles(), ElementsAre("whole"));
    std::vector<QString> named;
    for (const TextPair& problem : database.snapshot()->problems) {
        named.push_back(problem.english.section(QChar(u'“'), 1).section(QChar(u'”'), 0, 0));
        EXPECT_NE(problem.french, problem.english);
    }
    EXPECT_THAT(named, UnorderedElementsAre("list/binary.ics", "list/empty.ics", "list/huge.ics",
                                            "list/other.ics", "list/torn-event.ics", "list/torn.ics"));
    refresh();
    EXPECT_EQ(database.snapshot()->problems.size(), named.size());
    for (const auto& [name, text] : damaged)
        EXPECT_EQ(folder.content(QString("list/") + name), text);

    folder.put("list/torn.ics", VdirFolder::reminder("torn", "mended"));
    refresh();
    EXPECT_THAT(titles(), ElementsAre("mended", "whole"));
    EXPECT_EQ(database.snapshot()->problems.size(), named.size() - 1);
}

TEST_F(VdirDatabaseTest, PassesOverTemporaryAndHiddenNames) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "shown"));
    for (const char* name : {"list/a.icsXf3k2p", "list/.a.ics.tmp", "list/.hidden.ics", "list/a.tmp",
                             "list/a", "list/.ics", ".sync/b.ics", "b.ics"})
        folder.put(name, VdirFolder::reminder("b", "not shown"));
    open();
    EXPECT_THAT(titles(), ElementsAre("shown"));
    EXPECT_THAT(database.snapshot()->problems, IsEmpty());
    EXPECT_EQ(database.snapshot()->calendars.size(), 1U);
}

TEST_F(VdirDatabaseTest, ShowsAndChangesEveryReminderWhateverItsUid) {
    folder.put("list/1.ics", VdirFolder::reminder("same", "one"));
    folder.put("list/2.ics", VdirFolder::reminder("same", "two"));
    folder.put("work/1.ics", VdirFolder::reminder("same", "three"));
    folder.put("list/none.ics", VdirFolder::reminder("", "four").replace("UID:\r\n", ""));
    folder.put("list/odd.ics", VdirFolder::reminder("../../a/\"b\"", "five"));
    folder.put("list/pair.ics", "BEGIN:VCALENDAR\nBEGIN:VTODO\nUID:p\nSUMMARY:six\nEND:VTODO\n"
                                "BEGIN:VTODO\nUID:p\nSUMMARY:seven\nEND:VTODO\nEND:VCALENDAR\n");
    open();
    ASSERT_THAT(titles(), ElementsAre("five", "four", "one", "seven", "six", "three", "two"));
    EXPECT_EQ(titled("one")->calendarItemIdentifier, "same");
    EXPECT_EQ(titled("five")->calendarItemIdentifier, "../../a/\"b\"");

    for (const char* title : {"one", "two", "three", "four", "five", "six", "seven"}) {
        const auto saved = edit(title, [](EKReminderData& data) { data.title += "!"; });
        ASSERT_TRUE(saved.has_value()) << title;
        EXPECT_EQ(saved->calendarItemIdentifier, titled(title + QString("!"))->calendarItemIdentifier);
    }
    EXPECT_EQ(folder.names("list").size(), 5U);
    EXPECT_TRUE(folder.content("list/2.ics").contains("SUMMARY:two!"));
    ASSERT_TRUE(database.remove(titled("six!")->calendarItemIdentifier, paris).has_value());
    EXPECT_THAT(titles(), ElementsAre("five!", "four!", "one!", "seven!", "three!", "two!"));
    EXPECT_EQ(folder.content("list/pair.ics").count("BEGIN:VTODO"), 1);
}

TEST_F(VdirDatabaseTest, KnowsListsFromCalendars) {
    folder.put("reminders/a.ics", VdirFolder::reminder("a", "a"));
    folder.put("events/b.ics", VdirFolder::event("b"));
    folder.put("both/c.ics", VdirFolder::reminder("c", "c"));
    folder.put("both/d.ics", VdirFolder::event("d"));
    folder.put("neither/displayname", "Nothing yet");
    folder.put("damaged/e.ics", "");
    open();
    std::vector<std::tuple<QString, bool, bool>> kinds;
    for (const EKCalendar& calendar : database.snapshot()->calendars)
        kinds.emplace_back(calendar.calendarIdentifier, calendar.allowsReminders, calendar.allowsEvents);
    EXPECT_THAT(kinds,
                UnorderedElementsAre(std::tuple("reminders", true, false), std::tuple("events", false, true),
                                     std::tuple("both", true, true), std::tuple("neither", true, true),
                                     std::tuple("damaged", true, true)));
}

TEST_F(VdirDatabaseTest, ReadsWhatOthersWriteAboutAList) {
    folder.put("b/displayname", "  Été\n");
    folder.put("b/color", "#FF800080\n");
    folder.put("b/order", "2\n");
    folder.put("a/color", "None");
    folder.put("a/order", "10");
    folder.put("d/order", "soon");
    folder.put("d/displayname", "zz");
    folder.put("c/displayname", "");
    open();
    std::vector<QString> shown;
    for (const EKCalendar& calendar : database.snapshot()->calendars)
        shown.push_back(calendar.title + (calendar.color ? calendar.color->toString() : QString()));
    EXPECT_THAT(shown, ElementsAre("Été#FF8000", "a", "c", "zz"));
}

TEST_F(VdirDatabaseTest, GivesNewListsAFolderNameAndMetadataThatOthersUnderstand) {
    open();
    const auto create = [&](const QString& title) {
        const auto list = database.saveCalendar({.title = title}, paris);
        EXPECT_TRUE(list.has_value());
        return list ? list->calendarIdentifier : QString();
    };
    EXPECT_EQ(create("Été à la plage"), "ete-a-la-plage");
    EXPECT_EQ(create("été, à la plage!"), "ete-a-la-plage-2");
    EXPECT_EQ(create("../日本"), "list");
    EXPECT_EQ(folder.content("ete-a-la-plage/displayname"), QByteArray("Été à la plage"));
    EXPECT_EQ(folder.content("ete-a-la-plage/color").size(), 7);
    EXPECT_NE(folder.content("ete-a-la-plage/color"), folder.content("list/color"));
    EXPECT_EQ(database.saveCalendar({.title = " \n"}, paris).error().code, EKError::Code::invalidItem);

    ASSERT_TRUE(database
                    .saveCalendar(
                        {.calendarIdentifier = "list", .title = "two\nlines", .color = Color{1, 2, 3}}, paris)
                    .has_value());
    EXPECT_EQ(folder.content("list/displayname"), "two lines");
    EXPECT_EQ(folder.content("list/color"), "#010203");
}

TEST_F(VdirDatabaseTest, KeepsFileNamesAndNamesNewFilesByTheirUid) {
    folder.put("list/whatever name.ics", VdirFolder::reminder("a/b", "old"));
    open();
    ASSERT_TRUE(edit("old", rename("new")).has_value());
    EXPECT_THAT(folder.names("list"), ElementsAre("whatever name.ics"));

    const auto created = database.save(nullptr, aReminder("").titled("made").in("list"), now, paris);
    ASSERT_TRUE(created.has_value());
    EXPECT_TRUE(folder.has("list/" + created->calendarItemIdentifier + ".ics"));
}

TEST_F(VdirDatabaseTest, MergesWithWhatIsOnTheDiskByNowOrRefuses) {
    const QByteArray original = VdirFolder::reminder("a", "original", "PRIORITY:1\r\nX-KEEP:1\r\n");
    struct Case {
        const char* what;
        QByteArray onDisk;
        std::optional<EKError::Code> refused;
        QByteArray expected;  // contained in the file afterwards
    };
    const auto replaced = [&](const char* from, const char* to) {
        return QByteArray(original).replace(from, to);
    };
    const Case cases[] = {
        {"another property", replaced("PRIORITY:1", "PRIORITY:9"), std::nullopt, "PRIORITY:9"},
        {"one not understood", replaced("X-KEEP:1", "X-KEEP:2"), std::nullopt, "X-KEEP:2"},
        {"the same property", replaced("SUMMARY:original", "SUMMARY:theirs"), EKError::Code::conflict,
         "SUMMARY:theirs"},
        {"the same property, the same way", replaced("SUMMARY:original", "SUMMARY:ours"), std::nullopt,
         "SUMMARY:ours"},
        {"damaged", original.first(60), EKError::Code::storage, original.first(60)},
        {"another reminder", VdirFolder::reminder("b", "other"), EKError::Code::itemNotFound,
         "SUMMARY:other"},
    };
    for (const Case& each : cases) {
        folder.put("list/a.ics", original);
        open();
        const auto base = titled("original");
        folder.replace("list/a.ics", each.onDisk);
        const auto answer = edit(base, rename("ours"));
        EXPECT_EQ(answer ? std::nullopt : std::optional(answer.error().code), each.refused) << each.what;
        EXPECT_TRUE(folder.content("list/a.ics").contains(each.expected)) << each.what;
        EXPECT_EQ(folder.content("list/a.ics").contains("SUMMARY:ours"), !each.refused.has_value())
            << each.what;
    }
}

TEST_F(VdirDatabaseTest, FindsAReminderThatWasMovedElsewhereMeanwhile) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "old"));
    folder.put("work/displayname", "Work");
    open();
    ASSERT_TRUE(QFile::rename(folder.path("list/a.ics"), folder.path("work/b.ics")));
    ASSERT_TRUE(edit("old", rename("new")).has_value());
    EXPECT_TRUE(folder.content("work/b.ics").contains("SUMMARY:new"));
    EXPECT_EQ(titled("new")->calendarIdentifier, "work");
    EXPECT_FALSE(folder.has("list/a.ics"));
}

TEST_F(VdirDatabaseTest, MovesFilesBetweenListsAndLosesNothing) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "alone", "X-KEEP:1\r\n"));
    folder.put("list/pair.ics", "BEGIN:VCALENDAR\nX-KEEP:2\nBEGIN:VTODO\nUID:p\nSUMMARY:first\nEND:VTODO\n"
                                "BEGIN:VTODO\nUID:q\nSUMMARY:second\nEND:VTODO\nEND:VCALENDAR\n");
    folder.put("work/a.ics", VdirFolder::reminder("z", "in the way"));
    open();
    const auto toWork = [](EKReminderData& data) { data.calendarIdentifier = "work"; };
    ASSERT_TRUE(edit("alone", toWork).has_value());
    ASSERT_TRUE(edit("second", toWork).has_value());

    EXPECT_THAT(titles(), ElementsAre("alone", "first", "in the way", "second"));
    EXPECT_THAT(folder.names("list"), ElementsAre("pair.ics"));
    EXPECT_EQ(folder.content("list/pair.ics"),
              "BEGIN:VCALENDAR\nX-KEEP:2\nBEGIN:VTODO\nUID:p\nSUMMARY:first\nEND:VTODO\nEND:VCALENDAR\n");
    EXPECT_EQ(folder.names("work").size(), 3U);
    EXPECT_TRUE(folder.content("work/q.ics").contains("X-KEEP:2"));
    EXPECT_TRUE(folder.content("work/a.ics").contains("in the way"));
}

TEST_F(VdirDatabaseTest, WritesThroughSymbolicLinks) {
    folder.put("../elsewhere/real.ics", VdirFolder::reminder("a", "linked file"));
    folder.put("../shared/b.ics", VdirFolder::reminder("b", "linked list"));
    folder.put("list/displayname", "List");
    ASSERT_EQ(::symlink("../../elsewhere/real.ics", QFile::encodeName(folder.path("list/a.ics")).constData()),
              0);
    ASSERT_EQ(::symlink("../shared", QFile::encodeName(folder.path("linked")).constData()), 0);
    open();
    ASSERT_TRUE(edit("linked file", rename("one")).has_value());
    ASSERT_TRUE(edit("linked list", rename("two")).has_value());
    EXPECT_TRUE(QFileInfo(folder.path("list/a.ics")).isSymLink());
    EXPECT_TRUE(folder.content("../elsewhere/real.ics").contains("SUMMARY:one"));
    EXPECT_TRUE(folder.content("../shared/b.ics").contains("SUMMARY:two"));
}

TEST_F(VdirDatabaseTest, RespectsPermissions) {
    folder.put("list/open.ics", VdirFolder::reminder("a", "open"));
    folder.put("list/closed.ics", VdirFolder::reminder("b", "closed"));
    folder.put("list/fixed.ics", VdirFolder::reminder("c", "fixed"));
    folder.put("fixed/d.ics", VdirFolder::reminder("d", "in a fixed list"));
    folder.put("closed/e.ics", VdirFolder::reminder("e", "in a closed list"));
    const auto chmod = [&](const char* relative, mode_t mode) {
        EXPECT_EQ(::chmod(QFile::encodeName(folder.path(relative)).constData(), mode), 0);
    };
    for (const char* relative : {"list", "list/open.ics"})
        chmod(relative, relative == QByteArray("list") ? 0777 : 0666);
    chmod("list/closed.ics", 0);
    chmod("list/fixed.ics", 0444);
    chmod("fixed", 0555);
    chmod("closed", 0);
    {
        const WithoutPrivileges unprivileged(folder);
        open();
        EXPECT_THAT(titles(), ElementsAre("fixed", "in a fixed list", "open"));
        EXPECT_EQ(database.snapshot()->problems.size(), 2U);
        EXPECT_EQ(edit("fixed", rename("x")).error().code, EKError::Code::readOnly);
        EXPECT_EQ(edit("in a fixed list", rename("x")).error().code, EKError::Code::readOnly);
        EXPECT_EQ(edit("open", [](EKReminderData& data) { data.calendarIdentifier = "fixed"; }).error().code,
                  EKError::Code::readOnly);
        EXPECT_TRUE(edit("open", rename("changed")).has_value());
        std::vector<QString> writable;
        for (const EKCalendar& calendar : database.snapshot()->calendars) {
            if (calendar.allowsContentModifications)
                writable.push_back(calendar.calendarIdentifier);
        }
        EXPECT_THAT(writable, ElementsAre("list"));
    }
    chmod("closed", 0755);
}

TEST_F(VdirDatabaseTest, LosesNothingWhenTheDiskIsFull) {
    // The series is larger than the copy of its occurrence, because only it keeps the alarm.
    const QByteArray alarm =
        "BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nDESCRIPTION:" + QByteArray(2000, 'x') + "\r\nEND:VALARM\r\n";
    const QByteArray series =
        VdirFolder::reminder("a", "series", "DUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n" + alarm);
    folder.put("list/a.ics", series);
    folder.put("work/displayname", "Work");
    open();
    const DiskLimit limit(1500);
    EXPECT_EQ(edit("series", rename("x")).error().code, EKError::Code::storage);
    EXPECT_EQ(edit("series", complete).error().code, EKError::Code::storage);
    EXPECT_EQ(edit("series", [](EKReminderData& data) { data.calendarIdentifier = "work"; }).error().code,
              EKError::Code::storage);
    EXPECT_EQ(
        database.save(nullptr, aReminder("").titled(QString(3000, 'x')).in("list"), now, paris).error().code,
        EKError::Code::storage);
    EXPECT_THAT(folder.names("list"), ElementsAre("a.ics"));
    EXPECT_THAT(folder.names("work"), ElementsAre("displayname"));
    EXPECT_EQ(folder.content("list/a.ics"), series);
    EXPECT_THAT(titles(), ElementsAre("series"));
}

TEST_F(VdirDatabaseTest, LeavesTheFinishedOccurrenceInAFileOfItsOwn) {
    folder.put("list/a.ics",
               VdirFolder::reminder("a", "series", "DUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n"));
    open();
    const auto answer = edit("series", complete);
    ASSERT_TRUE(answer.has_value());
    ASSERT_TRUE(answer->completedCopyIdentifier.has_value());
    EXPECT_TRUE(folder.content("list/a.ics").contains("DUE;VALUE=DATE:20260328\r\n"));
    const QByteArray copy = folder.content("list/" + *answer->completedCopyIdentifier + ".ics");
    EXPECT_TRUE(copy.contains("RELATED-TO;RELTYPE=SIBLING:a\r\n"));
    EXPECT_FALSE(copy.contains("RRULE"));
}

TEST_F(VdirDatabaseTest, WritesNothingWhereNothingChanged) {
    const QByteArray text = VdirFolder::reminder("a", "same");
    folder.put("list/a.ics", text);
    open();
    const auto stamp = vdir::stampOf(QFile::encodeName(folder.path("list/a.ics")));
    EXPECT_TRUE(edit("same", rename("same")).has_value());
    EXPECT_EQ(vdir::stampOf(QFile::encodeName(folder.path("list/a.ics"))), stamp);
}

TEST_F(VdirDatabaseTest, EmptiesWhenTheFolderGoesAndFillsWhenItComesBack) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "old"));
    open();
    const auto base = titled("old");
    folder.removeAll();
    EXPECT_EQ(edit(base, rename("new")).error().code, EKError::Code::itemNotFound);
    EXPECT_EQ(database.save(nullptr, aReminder("").titled("x").in("list"), now, paris).error().code,
              EKError::Code::calendarNotFound);
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_THAT(database.snapshot()->calendars, IsEmpty());
    EXPECT_EQ(database.snapshot()->problems.size(), 1U);

    ASSERT_TRUE(database.saveCalendar({.title = "List"}, paris).has_value());
    folder.put("list/a.ics", VdirFolder::reminder("a", "again"));
    refresh();
    EXPECT_THAT(titles(), ElementsAre("again"));
    EXPECT_THAT(database.snapshot()->problems, IsEmpty());
}

TEST_F(VdirDatabaseTest, DoesNotOpenWhatIsNoFolder) {
    folder.put("../calendars", "a file");
    const auto error = database.open(paris);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, EKError::Code::storage);
    EXPECT_FALSE(database.isOpen());
}

}  // namespace
}  // namespace kestrant
