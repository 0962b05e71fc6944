#include "foundation/JsonFileUserDefaults.h"

#include "foundation/AtomicFile.h"
#include "support/ManualScheduler.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <thread>
#include <vector>

namespace kestrant {
namespace {

class JsonFileUserDefaultsTest : public testing::Test {
  protected:
    [[nodiscard]] QString path() const { return folder.filePath(QStringLiteral("config/preferences.json")); }
    void putFile(const QByteArray& content) const {
        ASSERT_TRUE(createFolder(folder.filePath(QStringLiteral("config"))).has_value());
        ASSERT_TRUE(writeFileAtomically(path(), content).has_value());
    }
    [[nodiscard]] QJsonObject fileValues() const {
        return QJsonDocument::fromJson(readFile(path()).value_or(QByteArray())).object();
    }
    JsonFileUserDefaults& open() {
        return *(defaults = std::make_unique<JsonFileUserDefaults>(path(), scheduler));
    }

    QTemporaryDir folder;
    ManualScheduler scheduler{Instant{}};
    std::unique_ptr<JsonFileUserDefaults> defaults;
};

TEST_F(JsonFileUserDefaultsTest, SurviveTheProgramAndKeepWhatTheyDoNotKnow) {
    putFile(R"({"unknown": {"nested": [1, 2.5, null]}, "gone": 1, "delay": 0})");
    open().set(QStringLiteral("delay"), 0.25);
    defaults->set(QStringLiteral("name"), QStringLiteral("é’"));
    defaults->remove(QStringLiteral("gone"));
    EXPECT_EQ(defaults->number(QStringLiteral("delay")), 0.25);
    EXPECT_TRUE(defaults->object(QStringLiteral("gone")).isUndefined());
    defaults.reset();
    EXPECT_EQ(fileValues(), QJsonDocument::fromJson(
                                R"({"unknown": {"nested": [1, 2.5, null]}, "delay": 0.25, "name": "é’"})")
                                .object());
    EXPECT_EQ(open().string(QStringLiteral("name")), QStringLiteral("é’"));
}

TEST_F(JsonFileUserDefaultsTest, OfTwoProcessesBothAddToTheSameObject) {
    putFile(R"({"flags": {"a": true, "b": true}, "order": ["x"]})");
    open();
    JsonFileUserDefaults other(path(), scheduler);
    const QString key = QStringLiteral("flags");
    other.set(key, QJsonObject{{"a", true}, {"b", true}, {"theirs", true}});
    defaults->set(key, QJsonObject{{"a", false}, {"ours", true}});
    EXPECT_TRUE(other.flush());
    EXPECT_TRUE(defaults->flush());
    const QJsonObject expected{{"a", false}, {"ours", true}, {"theirs", true}};
    EXPECT_EQ(fileValues().value(key).toObject(), expected);
    EXPECT_EQ(defaults->object(key).toObject(), expected);
}

TEST_F(JsonFileUserDefaultsTest, KeepWhatAProgramWritesThatDoesNotLockThem) {
    putFile("{}");
    open();
    for (int round = 1; round <= 200; ++round) {
        defaults->set(QStringLiteral("ours"), round);
        std::thread flushing([this] { EXPECT_TRUE(defaults->flush()); });
        // At another moment of the flush in each round; every other time in place, as some editors do.
        std::this_thread::sleep_for(std::chrono::microseconds(round * 10));
        QJsonObject values = fileValues();
        values.insert(QStringLiteral("theirs"), round);
        const QByteArray text = QJsonDocument(values).toJson();
        if (round % 2 == 0) {
            QFile file(path());
            ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        } else {
            putFile(text);
        }
        flushing.join();
        ASSERT_EQ(fileValues().value(QStringLiteral("theirs")), round);
    }
    EXPECT_FALSE(QFile::exists(path() + QStringLiteral(".damaged-1")));
}

TEST_F(JsonFileUserDefaultsTest, ThatAreOnlyReadAreNotWritten) {
    EXPECT_TRUE(open().object(QStringLiteral("key")).isUndefined());
    defaults->remove(QStringLiteral("key"));
    defaults.reset();
    EXPECT_FALSE(QFile::exists(path()));
}

TEST_F(JsonFileUserDefaultsTest, SetADamagedFileAsideWhenTheyAreWrittenAndNotBefore) {
    for (const char* damaged : {"", "{\"a\": 1", "[1]", "\xFF\xFE"}) {
        const QTemporaryDir own;
        const QString file = own.filePath(QStringLiteral("preferences.json"));
        ASSERT_TRUE(writeFileAtomically(file, damaged).has_value());
        JsonFileUserDefaults store(file, scheduler);
        EXPECT_TRUE(store.object(QStringLiteral("a")).isUndefined());
        ASSERT_TRUE(store.problem().has_value());
        EXPECT_TRUE(store.problem()->english.contains(file));
        EXPECT_TRUE(store.flush());
        EXPECT_EQ(readFile(file).value(), damaged);

        store.set(QStringLiteral("b"), 2);
        EXPECT_TRUE(store.flush());
        EXPECT_EQ(readFile(file + QStringLiteral(".damaged-1")).value(), damaged);
        EXPECT_TRUE(store.problem()->english.contains(QStringLiteral(".damaged-1")));
        EXPECT_EQ(QJsonDocument::fromJson(readFile(file).value()).object(), (QJsonObject{{"b", 2}}));
    }
}

TEST_F(JsonFileUserDefaultsTest, DamagedWhileRunningAreWrittenAgainWithEverythingKnown) {
    putFile(R"({"a": 1})");
    open();
    putFile("{");
    defaults->set(QStringLiteral("b"), 2);
    EXPECT_TRUE(defaults->flush());
    EXPECT_EQ(fileValues(), (QJsonObject{{"a", 1}, {"b", 2}}));
}

TEST_F(JsonFileUserDefaultsTest, ThatCannotBeWrittenStayInMemoryAndAreWrittenLater) {
    ASSERT_TRUE(createFolder(path()).has_value()) << "a folder where the file should be";
    open().set(QStringLiteral("a"), 1);
    int told = 0;
    const Subscription problems = defaults->observeProblem([&told] { ++told; });
    EXPECT_FALSE(defaults->flush());
    EXPECT_TRUE(defaults->problem().has_value());
    EXPECT_EQ(defaults->integer(QStringLiteral("a")), 1);
    ASSERT_TRUE(QDir().rmdir(path()));
    EXPECT_TRUE(defaults->flush());
    EXPECT_EQ(fileValues(), (QJsonObject{{"a", 1}}));
    EXPECT_FALSE(defaults->problem().has_value());
    scheduler.runPosted();
    EXPECT_GE(told, 2);
}

TEST_F(JsonFileUserDefaultsTest, TakeOverWhatAnotherProcessChangesKeyByKey) {
    putFile(R"({"theirs": 1, "ours": 1, "removed": true})");
    open();
    QStringList told;
    const Subscription subscription = defaults->observe([&](const QString& key) { told.append(key); });
    defaults->set(QStringLiteral("ours"), 2);
    EXPECT_EQ(told, QStringList{"ours"}) << "at once on the store's own thread";

    JsonFileUserDefaults other(path(), scheduler);
    other.set(QStringLiteral("theirs"), 3);
    other.set(QStringLiteral("new"), true);
    other.remove(QStringLiteral("removed"));
    EXPECT_TRUE(other.flush());
    EXPECT_TRUE(scheduler.runUntil([&] { return told.size() == 4; }));
    told.sort();
    EXPECT_EQ(told, (QStringList{"new", "ours", "removed", "theirs"}));
    EXPECT_EQ(defaults->integer(QStringLiteral("theirs")), 3);
    EXPECT_EQ(defaults->integer(QStringLiteral("ours")), 2);
    EXPECT_TRUE(defaults->flush());
    EXPECT_EQ(fileValues(), (QJsonObject{{"theirs", 3}, {"ours", 2}, {"new", true}}));
}

TEST_F(JsonFileUserDefaultsTest, NoticeAnEditorThatReplacesTheFileAndOneThatRemovesIt) {
    putFile(R"({"a": 1})");
    open();
    std::vector<std::optional<qint64>> seen;
    const Subscription subscription =
        defaults->observe([&](const QString&) { seen.push_back(defaults->integer(QStringLiteral("a"))); });
    putFile(R"({"a": 2})");
    EXPECT_TRUE(scheduler.runUntil([&] { return seen.size() == 1; }));
    ASSERT_TRUE(QFile::remove(path()));
    EXPECT_TRUE(scheduler.runUntil([&] { return seen.size() == 2; }));
    EXPECT_THAT(seen, testing::ElementsAre(2, std::nullopt));
}

TEST_F(JsonFileUserDefaultsTest, AreWrittenWithoutBeingAsked) {
    open().set(QStringLiteral("a"), 1);
    JsonFileUserDefaults other(path(), scheduler);
    EXPECT_TRUE(scheduler.runUntil([&] { return other.integer(QStringLiteral("a")) == 1; }) ||
                other.integer(QStringLiteral("a")) == 1);
}

TEST_F(JsonFileUserDefaultsTest, MayBeChangedFromAnyThread) {
    open();
    int told = 0;
    const auto own = std::this_thread::get_id();
    const Subscription subscription = defaults->observe([&](const QString&) {
        EXPECT_EQ(std::this_thread::get_id(), own);
        ++told;
    });
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([this, thread] {
            for (int i = 0; i < 50; ++i) {
                defaults->set(QStringLiteral("%1/%2").arg(thread).arg(i), i);
                (void)defaults->integer(QStringLiteral("0/0"));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    scheduler.runPosted();
    EXPECT_EQ(told, 200);
    defaults.reset();
    EXPECT_EQ(fileValues().size(), 200);
}

}  // namespace
}  // namespace kestrant
