#include "support/MemoryUserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

#include <limits>

namespace kestrant {
namespace {

struct TypeCase {
    const char* json;
    std::optional<bool> boolean;
    std::optional<qint64> integer;
    std::optional<double> number;
    std::optional<QString> string;
    std::optional<QStringList> stringList;
};

TEST(UserDefaults, ReadAValueOnlyAsWhatItIs) {
    const TypeCase cases[] = {
        {"true", true, {}, {}, {}, {}},
        {"0", {}, 0, 0.0, {}, {}},
        {"2.0", {}, 2, 2.0, {}, {}},
        {"-1", {}, -1, -1.0, {}, {}},
        {"0.3", {}, {}, 0.3, {}, {}},
        {"1e300", {}, {}, 1e300, {}, {}},
        {"9007199254740993", {}, 9007199254740993, 9007199254740993.0, {}, {}},
        {"\"1\"", {}, {}, {}, QStringLiteral("1"), {}},
        {"\"\"", {}, {}, {}, QString(QLatin1String("")), {}},
        {"[\"a\", \"b\"]", {}, {}, {}, {}, QStringList{"a", "b"}},
        {"[]", {}, {}, {}, {}, QStringList()},
        {"[\"a\", 1]", {}, {}, {}, {}, {}},
        {"{\"a\": 1}", {}, {}, {}, {}, {}},
        {"null", {}, {}, {}, {}, {}},
    };
    const QString key = QStringLiteral("key");
    for (const TypeCase& testCase : cases) {
        const QByteArray document = QByteArray("{\"key\": ") + testCase.json + "}";
        const MemoryUserDefaults defaults(QJsonDocument::fromJson(document).object());
        EXPECT_EQ(defaults.boolean(key), testCase.boolean) << testCase.json;
        EXPECT_EQ(defaults.integer(key), testCase.integer) << testCase.json;
        EXPECT_EQ(defaults.number(key), testCase.number) << testCase.json;
        EXPECT_EQ(defaults.string(key), testCase.string) << testCase.json;
        EXPECT_EQ(defaults.stringList(key), testCase.stringList) << testCase.json;
    }
}

TEST(UserDefaults, TellAbsentFromPresentAndRemove) {
    MemoryUserDefaults defaults;
    const QString key = QStringLiteral("key");
    EXPECT_TRUE(defaults.object(key).isUndefined());
    defaults.setStringList(key, {QStringLiteral("é")});
    EXPECT_EQ(defaults.stringList(key), QStringList{QStringLiteral("é")});
    defaults.remove(key);
    EXPECT_TRUE(defaults.object(key).isUndefined());
}

}  // namespace
}  // namespace kestrant
