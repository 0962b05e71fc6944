#include "VdirFolder.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using items::ChangeRecord;
using vdir::VdirDatabase;
using Result = tl::expected<EKSaveResult, EKError>;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});

class VdirRevertingTest : public ::testing::Test {
  protected:
    void open() { ASSERT_FALSE(database.open(paris).has_value()); }
    template <typename Change>
    Result edit(const QString& identifier, Change change) {
        const auto base = database.snapshot()->reminders.value(identifier).data;
        EKReminderData edited = base ? *base : EKReminderData{};
        change(edited);
        return database.save(base, edited, now, paris);
    }
    Result remove(const char* identifier) { return database.remove(QString::fromUtf8(identifier), paris); }
    Result revert(const Result& done) {
        const auto change = std::dynamic_pointer_cast<const ChangeRecord>(done->change);
        return change ? database.revert(*change, done->calendarItemIdentifier, now, paris)
                      : tl::unexpected(EKError{EKError::Code::storage, {}});
    }
    /// All files with their texts.
    [[nodiscard]] std::map<QString, QByteArray> files() const {
        std::map<QString, QByteArray> result;
        for (const QString& list : folder.names()) {
            for (const QString& name : folder.names(list))
                result[list + "/" + name] = folder.content(list + "/" + name);
        }
        return result;
    }
    static std::optional<EKError::Code> codeOf(const Result& result) {
        return result ? std::nullopt : std::optional(result.error().code);
    }

    VdirFolder folder;
    VdirDatabase database{folder.nativeRoot()};
};

constexpr auto rename = [](EKReminderData& data) { data.title = "renamed"; };
constexpr auto complete = [](EKReminderData& data) { data.isCompleted = true; };
constexpr auto moveToOther = [](EKReminderData& data) { data.calendarIdentifier = "other"; };

TEST_F(VdirRevertingTest, RestoresEveryByteThatNobodyElseHasTouched) {
    struct Case {
        const char* what;
        QByteArray lines;
        std::function<Result()> change;
    };
    const QByteArray alarm = "BEGIN:VALARM\nUID:x\nACTION:AUDIO\nTRIGGER;VALUE=DATE-TIME:20260327T080000Z\n"
                             "BEGIN:VLOCATION\nNAME:h\nEND:VLOCATION\nEND:VALARM\n";
    const auto edited = [this](auto how) { return [this, how] { return edit("a", how); }; };
    const Case cases[] = {
        {"an edit", "X-KEEP;a=b:c\nDESCRIPTION:long\n  er\nSEQUENCE:7\n", edited(rename)},
        {"a due date with its zone", "DUE;TZID=Europe/Paris:20260401T090000\n" + alarm,
         edited([](EKReminderData& data) {
             data.dueDateComponents =
                 DateComponents::fromDateTime({2026, 5, 1}, {9, 0}, TimeZone::named("America/New_York"));
             data.alarms = {EKAlarm::at(now)};
         })},
        {"a completion of something half done", "STATUS:IN-PROCESS\nPERCENT-COMPLETE:50\n", edited(complete)},
        {"an occurrence",
         "DUE;VALUE=DATE:20260327\nRRULE:FREQ=DAILY;COUNT=4\nRDATE;VALUE=DATE:20260328\n" + alarm,
         edited(complete)},
        {"another list", alarm, edited(moveToOther)},
        {"a removal", "X-KEEP:1\n" + alarm, [this] { return remove("a"); }},
        {"a creation", "",
         [this] { return database.save(nullptr, aReminder("").titled("new").in("list"), now, paris); }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        folder.put("list/name of its own.ics", VdirFolder::reminder("a", "original", each.lines));
        folder.put("other/b.ics", VdirFolder::reminder("b", "b"));
        open();
        const auto before = files();
        const Result done = each.change();
        ASSERT_TRUE(done && done->change);
        const auto after = files();
        EXPECT_NE(after, before);
        const Result undone = revert(done);
        ASSERT_TRUE(undone.has_value());
        EXPECT_EQ(files(), before);
        const Result redone = revert(undone);
        ASSERT_TRUE(redone.has_value());
        EXPECT_EQ(files(), after);
        ASSERT_TRUE(revert(redone).has_value());
        EXPECT_EQ(files(), before);
    }
}

TEST_F(VdirRevertingTest, KeepsWhatOthersChangedElsewhereInTheFileAndMarksTheRevision) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "old", "PRIORITY:1\r\nX-KEEP:1\r\nSEQUENCE:3\r\n"));
    open();
    const Result renamed = edit("a", rename);
    folder.replace("list/a.ics", folder.content("list/a.ics")
                                     .replace("X-KEEP:1", "X-KEEP:2")
                                     .replace("PRIORITY:1\r\n", "PRIORITY:1\r\nCATEGORIES:x\r\n"));
    ASSERT_TRUE(revert(renamed).has_value());
    EXPECT_EQ(folder.content("list/a.ics"),
              "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:a\r\nDTSTAMP:20260327T120000Z\r\n"
              "SUMMARY:old\r\nPRIORITY:1\r\nCATEGORIES:x\r\nX-KEEP:2\r\nSEQUENCE:5\r\n"
              "CREATED:20260101T000000Z\r\nLAST-MODIFIED:20260327T120000Z\r\nEND:VTODO\r\nEND:VCALENDAR\r\n");
}

TEST_F(VdirRevertingTest, RefusesWhereItWouldOverwriteWhatOthersDid) {
    struct Case {
        const char* what;
        std::function<Result()> change;
        std::function<void()> elsewhere;
        EKError::Code refusal;
    };
    const auto replaceIn = [this](const char* file, const char* from, const char* to) {
        return [=, this] { folder.replace(file, folder.content(file).replace(from, to)); };
    };
    const auto edited = [this](auto how) { return [this, how] { return edit("a", how); }; };
    const auto removed = [this] { return remove("a"); };
    const Case cases[] = {
        {"the same property", edited(rename), replaceIn("list/a.ics", "renamed", "theirs"),
         EKError::Code::conflict},
        {"damaged meanwhile", edited(rename), replaceIn("list/a.ics", "END:VTODO", "END:"),
         EKError::Code::storage},
        {"the next occurrence completed elsewhere", edited(complete),
         replaceIn("list/a.ics", "DUE;VALUE=DATE:20260328", "DUE;VALUE=DATE:20260329"),
         EKError::Code::conflict},
        {"moved on to a third list", edited(moveToOther),
         [this] {
             folder.put("third/a.ics", folder.content("other/a.ics"));
             folder.remove("other/a.ics");
         },
         EKError::Code::conflict},
        {"removed elsewhere", edited(rename), [this] { folder.remove("list/a.ics"); },
         EKError::Code::itemNotFound},
        {"the list removed", removed,
         [this] {
             folder.removeAll("list");
             (void)database.refresh({.everything = true}, paris);
         },
         EKError::Code::calendarNotFound},
        {"back already", removed,
         [this] {
             folder.put("other/restored.ics", VdirFolder::reminder("a", "theirs"));
             (void)database.refresh({.everything = true}, paris);
         },
         EKError::Code::conflict},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        folder.removeAll();
        folder.put("list/a.ics",
                   VdirFolder::reminder("a", "old", "DUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n"));
        folder.put("other/b.ics", VdirFolder::reminder("b", "b"));
        open();
        const Result done = each.change();
        ASSERT_TRUE(done.has_value());
        each.elsewhere();
        const auto before = files();
        EXPECT_EQ(codeOf(revert(done)), each.refusal);
        EXPECT_EQ(files(), before);
    }
}

TEST_F(VdirRevertingTest, KeepsASeriesAndItsCopyTogether) {
    folder.put("list/a.ics",
               VdirFolder::reminder("a", "series", "DUE;VALUE=DATE:20260327\r\nRRULE:FREQ=DAILY\r\n"));
    open();
    const Result done = edit("a", complete);
    const QString copy = "list/" + *done->completedCopyIdentifier + ".ics";
    const QByteArray text = folder.content(copy);
    folder.replace(copy, QByteArray(text).replace("SUMMARY:series", "SUMMARY:theirs"));
    const auto before = files();
    EXPECT_EQ(codeOf(revert(done)), EKError::Code::conflict);
    EXPECT_EQ(files(), before) << "the series did not go back alone";

    folder.remove(copy);
    ASSERT_TRUE(revert(done).has_value()) << "a copy that is gone leaves nothing to do";
    EXPECT_TRUE(folder.content("list/a.ics").contains("DUE;VALUE=DATE:20260327"));
}

TEST_F(VdirRevertingTest, BringsOneOfSeveralBackFromASharedFile) {
    folder.put("list/pair.ics", "BEGIN:VCALENDAR\nBEGIN:VTODO\nUID:a\nSUMMARY:one\nX-A:1\nEND:VTODO\n"
                                "BEGIN:VTODO\nUID:b\nSUMMARY:two\nEND:VTODO\nEND:VCALENDAR\n");
    open();
    const Result renamed = edit("a", rename);
    ASSERT_TRUE(edit("b", [](EKReminderData& data) { data.title = "second"; }).has_value());
    ASSERT_TRUE(revert(renamed).has_value());
    EXPECT_TRUE(folder.content("list/pair.ics").contains("SUMMARY:one\n"));
    EXPECT_TRUE(folder.content("list/pair.ics").contains("SUMMARY:second\n"));

    const Result removed = remove("a");
    EXPECT_FALSE(folder.content("list/pair.ics").contains("UID:a\n"));
    ASSERT_TRUE(revert(removed).has_value());
    ASSERT_EQ(folder.names("list").size(), 2U);
    for (const auto& [name, text] : files()) {
        const bool isShared = name == "list/pair.ics";
        EXPECT_EQ(text.contains("X-A:1\n"), !isShared);
        EXPECT_EQ(text.contains("SUMMARY:second\n"), isShared);
    }
}

TEST_F(VdirRevertingTest, TakesAwayWhatWasMadeOnlyWhileItSaysTheSame) {
    open();
    ASSERT_TRUE(database.saveCalendar({.title = "List"}, paris).has_value());
    const Result made =
        database.save(nullptr, aReminder("").titled("new").in("list").alarmAt(now), now, paris);
    const QString id = made->calendarItemIdentifier;
    ASSERT_TRUE(edit(id, [](EKReminderData& data) {
                    data.isFlagged = true;
                    data.alarms[0].acknowledgedDate = now;
                }).has_value());
    const auto noted = files();
    const Result taken = revert(made);
    ASSERT_TRUE(taken.has_value()) << "a flag and an acknowledgement are no changes";
    EXPECT_EQ(database.snapshot()->reminders.size(), 0);
    ASSERT_TRUE(revert(taken).has_value());
    EXPECT_EQ(files(), noted);
    ASSERT_TRUE(edit(id, rename).has_value());
    EXPECT_EQ(codeOf(revert(made)), EKError::Code::conflict);
}

}  // namespace
}  // namespace kestrant
