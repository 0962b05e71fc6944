#include "completion/CompletionLedger.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using State = ReminderCompletionState;

const Instant noon = instantFromSecondsSinceReferenceDate(796'305'600);
const Instant earlier = noon - 3h;

CompletionRecord record(const char* identifier, Instant completedAt, Instant lastSeenAt) {
    return {QString::fromUtf8(identifier), completedAt, lastSeenAt, 1};
}

CompletionLedgerV1 ledgerOf(std::initializer_list<CompletionRecord> records) {
    CompletionLedgerV1 ledger;
    for (const CompletionRecord& each : records)
        ledger.records.emplace(each.reminderIdentifier, each);
    return ledger;
}

struct MergeCase {
    const char* what;
    CompletionLedgerV1 before;
    std::map<QString, State> states;
    std::vector<CompletionObservation> observations;
    CompletionLedgerV1 after;
};

TEST(MergeOfCompletions, ChangesTheLedgerOnlyWhereThereIsNews) {
    const QString a = QStringLiteral("a");
    const CompletionLedgerV1 fresh = ledgerOf({record("a", earlier, noon - 86'399s)});
    const CompletionLedgerV1 stale = ledgerOf({record("a", earlier, noon - 86'400s)});
    const CompletionLedgerV1 seen = ledgerOf({record("a", earlier, noon)});
    const MergeCase cases[] = {
        {"nothing", stale, {}, {}, stale},
        {"new", {}, {{a, State::completed(earlier)}}, {}, seen},
        {"new, observed", {}, {}, {{a, earlier}}, seen},
        {"new without a date", {}, {{a, State::completed({})}}, {{a, {}}}, {}},
        {"fresh", fresh, {{a, State::completed(earlier)}}, {{a, earlier}}, fresh},
        {"fresh without a date", fresh, {{a, State::completed({})}}, {}, fresh},
        {"stale", stale, {{a, State::completed(earlier)}}, {}, seen},
        {"stale, observed", stale, {}, {{a, earlier}}, seen},
        {"stale without a date", stale, {{a, State::completed({})}}, {}, seen},
        {"stale, observed without a date", stale, {}, {{a, {}}}, stale},
        {"fresh, other date", fresh, {}, {{a, noon}}, ledgerOf({record("a", noon, noon - 86'399s)})},
        {"stale, other date", stale, {{a, State::completed(noon)}}, {}, ledgerOf({record("a", noon, noon)})},
        {"taken back", fresh, {{a, State::incomplete()}}, {}, {}},
        {"taken back, unknown", fresh, {{QStringLiteral("b"), State::incomplete()}}, {}, fresh},
        {"deleted", stale, {{a, State::deleted()}}, {}, stale},
        {"the database's date prevails", {}, {{a, State::completed(noon)}}, {{a, earlier}}, seen},
        {"taken back but still completed in the database",
         fresh,
         {{a, State::incomplete()}},
         {{a, earlier}},
         seen},
        {"several",
         ledgerOf({record("a", earlier, noon), record("b", earlier, noon)}),
         {{a, State::incomplete()}, {QStringLiteral("c"), State::completed(noon)}},
         {{QStringLiteral("b"), earlier}, {QStringLiteral("d"), earlier}},
         ledgerOf({record("b", earlier, noon), record("c", noon, noon), record("d", earlier, noon)})},
    };
    for (const MergeCase& testCase : cases) {
        CompletionLedgerV1 ledger = testCase.before;
        const bool changed = mergeCompletions(ledger, testCase.states, testCase.observations, noon);
        EXPECT_EQ(ledger, testCase.after) << testCase.what;
        EXPECT_EQ(changed, testCase.before != testCase.after) << testCase.what;
    }
}

struct ChangeCase {
    const char* what;
    CompletionLedgerV1 before;
    CompletionLedgerV1 after;
    CompletionLedgerV1 present;
    CompletionLedgerV1 expected;
};

TEST(ChangeOfALedger, IsMadeOnWhatOthersHaveWrittenMeanwhile) {
    const CompletionLedgerV1 nothing;
    const CompletionRecord a = record("a", earlier, earlier);
    const CompletionRecord later = record("a", earlier, noon);
    const CompletionRecord b = record("b", earlier, noon);
    const ChangeCase cases[] = {
        {"added", nothing, ledgerOf({a}), ledgerOf({b}), ledgerOf({a, b})},
        {"changed", ledgerOf({a}), ledgerOf({later}), ledgerOf({a, b}), ledgerOf({later, b})},
        {"taken away", ledgerOf({a}), nothing, ledgerOf({a, b}), ledgerOf({b})},
        {"changed by others", ledgerOf({a}), ledgerOf({a, b}), ledgerOf({later}), ledgerOf({later, b})},
        {"taken away by others", ledgerOf({a}), ledgerOf({a, b}), nothing, ledgerOf({b})},
    };
    for (const ChangeCase& each : cases)
        EXPECT_EQ(withChange(each.present, {each.before, each.after}), each.expected) << each.what;
}

TEST(LedgerDocument, HasSortedKeysAndNoWhitespace) {
    CompletionLedgerV1 ledger = ledgerOf({record("é \"1\"", noon + 250ms, noon), record("A", earlier, noon)});
    ledger.didBackfill = true;
    EXPECT_EQ(
        encodeLedger(ledger),
        R"({"didBackfill":true,"records":{)"
        R"("A":{"completedAt":796294800,"lastSeenAt":796305600,"reminderIdentifier":"A","schemaVersion":1},)"
        R"("é \"1\"":{"completedAt":796305600.25,"lastSeenAt":796305600,"reminderIdentifier":"é \"1\"",)"
        R"("schemaVersion":1}},"schemaVersion":1})");
    EXPECT_EQ(decodeLedger(encodeLedger(ledger)), ledger);
    EXPECT_EQ(encodeLedger({}), R"({"didBackfill":false,"records":{},"schemaVersion":1})");
}

TEST(LedgerDocument, IsUsableOnlyWhenComplete) {
    const QByteArray record =
        R"({"completedAt":1.5,"lastSeenAt":2,"reminderIdentifier":"a","schemaVersion":1})";
    const QByteArray complete =
        R"({"didBackfill":false,"records":{"a":)" + record + R"(},"schemaVersion":1})";
    EXPECT_EQ(decodeLedger(complete),
              ledgerOf({{QStringLiteral("a"), instantFromSecondsSinceReferenceDate(1.5),
                         instantFromSecondsSinceReferenceDate(2), 1}}));
    EXPECT_EQ(
        decodeLedger(QByteArray(complete).replace("{\"didBackfill\"", "{\"later\":[1],\"didBackfill\"")),
        decodeLedger(complete));

    for (const auto& [from, to] : std::initializer_list<std::pair<const char*, const char*>>{
             {"\"schemaVersion\":1}}", "\"schemaVersion\":1}"},
             {"},\"schemaVersion\":1}", "},\"schemaVersion\":2}"},
             {"},\"schemaVersion\":1}", "},\"schemaVersion\":1.5}"},
             {"},\"schemaVersion\":1}", "},\"schemaVersion\":\"1\"}"},
             {"},\"schemaVersion\":1}", "}}"},
             {"\"didBackfill\":false,", ""},
             {"\"didBackfill\":false", "\"didBackfill\":0"},
             {"\"records\"", "\"record\""},
             {"\"completedAt\":1.5,", ""},
             {"\"completedAt\":1.5", "\"completedAt\":\"2026-03-27\""},
             {"\"lastSeenAt\":2,", ""},
             {"\"reminderIdentifier\":\"a\",", ""},
             {",\"schemaVersion\":1}}", "}}"},
             {"{\"didBackfill\"", "[{\"didBackfill\""},
         }) {
        const QByteArray damaged = QByteArray(complete).replace(from, to);
        ASSERT_NE(damaged, complete) << from;
        EXPECT_EQ(decodeLedger(damaged), std::nullopt) << damaged.toStdString();
    }
    for (const char* document : {"", "null", "[]", "{}", "\xFF", "{\"records\":"})
        EXPECT_EQ(decodeLedger(document), std::nullopt) << document;
}

TEST(SortedRecords, GoByDateThenByIdentifier) {
    const CompletionRecord late = record("a", noon, noon);
    const CompletionRecord first = record("b", earlier, noon);
    const CompletionRecord second = record("c", earlier, noon);
    EXPECT_THAT(sortedRecords(ledgerOf({late, first, second})), testing::ElementsAre(first, second, late));
}

}  // namespace
}  // namespace kestrant
