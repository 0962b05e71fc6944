#include "completion/CompletionLedger.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <chrono>
#include <tuple>

namespace kestrant {

namespace {

constexpr int currentSchemaVersion = 1;
constexpr Duration refreshInterval = std::chrono::hours(24);

const auto completedAtKey = QStringLiteral("completedAt");
const auto lastSeenAtKey = QStringLiteral("lastSeenAt");
const auto reminderIdentifierKey = QStringLiteral("reminderIdentifier");
const auto schemaVersionKey = QStringLiteral("schemaVersion");
const auto recordsKey = QStringLiteral("records");
const auto didBackfillKey = QStringLiteral("didBackfill");

bool refreshIfStale(CompletionRecord& record, Instant now) {
    if (now - record.lastSeenAt < refreshInterval)
        return false;
    record.lastSeenAt = now;
    return true;
}

bool mergeCompleted(CompletionLedgerV1& ledger, const QString& identifier, Instant completedAt, Instant now) {
    const auto [found, isNew] = ledger.records.try_emplace(
        identifier, CompletionRecord{identifier, completedAt, now, currentSchemaVersion});
    if (isNew)
        return true;
    const bool isRefreshed = refreshIfStale(found->second, now);
    if (found->second.completedAt == completedAt)
        return isRefreshed;
    found->second.completedAt = completedAt;
    return true;
}

bool mergeState(CompletionLedgerV1& ledger, const QString& identifier, const ReminderCompletionState& state,
                Instant now) {
    switch (state.kind) {
    case ReminderCompletionState::Kind::completed: {
        if (state.completedAt)
            return mergeCompleted(ledger, identifier, *state.completedAt, now);
        const auto found = ledger.records.find(identifier);
        return found != ledger.records.end() && refreshIfStale(found->second, now);
    }
    case ReminderCompletionState::Kind::incomplete:
        return ledger.records.erase(identifier) > 0;
    case ReminderCompletionState::Kind::deleted:
        return false;
    }
    return false;
}

QJsonObject encode(const CompletionRecord& record) {
    return {{completedAtKey, secondsSinceReferenceDate(record.completedAt)},
            {lastSeenAtKey, secondsSinceReferenceDate(record.lastSeenAt)},
            {reminderIdentifierKey, record.reminderIdentifier},
            {schemaVersionKey, record.schemaVersion}};
}

std::optional<int> decodeInteger(const QJsonValue& value) {
    const int integer = value.toInt(-1);
    if (integer != value.toInt(-2))
        return std::nullopt;
    return integer;
}

std::optional<CompletionRecord> decodeRecord(const QJsonValue& value) {
    const QJsonObject object = value.toObject();
    const QJsonValue completedAt = object.value(completedAtKey);
    const QJsonValue lastSeenAt = object.value(lastSeenAtKey);
    const QJsonValue identifier = object.value(reminderIdentifierKey);
    const std::optional<int> schemaVersion = decodeInteger(object.value(schemaVersionKey));
    if (!completedAt.isDouble() || !lastSeenAt.isDouble() || !identifier.isString() || !schemaVersion)
        return std::nullopt;
    return CompletionRecord{identifier.toString(),
                            instantFromSecondsSinceReferenceDate(completedAt.toDouble()),
                            instantFromSecondsSinceReferenceDate(lastSeenAt.toDouble()), *schemaVersion};
}

}  // namespace

bool mergeCompletions(CompletionLedgerV1& ledger, const std::map<QString, ReminderCompletionState>& states,
                      const std::vector<CompletionObservation>& observations, Instant now) {
    bool changed = false;
    for (const auto& [identifier, state] : states)
        changed |= mergeState(ledger, identifier, state, now);
    for (const CompletionObservation& observation : observations) {
        if (observation.completedAt)
            changed |= mergeCompleted(ledger, observation.reminderIdentifier, *observation.completedAt, now);
    }
    return changed;
}

CompletionLedgerV1 withChange(CompletionLedgerV1 present, const LedgerChange& change) {
    for (const auto& [identifier, record] : change.before.records) {
        if (!change.after.records.contains(identifier))
            present.records.erase(identifier);
    }
    for (const auto& [identifier, record] : change.after.records) {
        const auto before = change.before.records.find(identifier);
        if (before == change.before.records.end() || before->second != record)
            present.records.insert_or_assign(identifier, record);
    }
    present.didBackfill = present.didBackfill || change.after.didBackfill;
    return present;
}

std::vector<CompletionRecord> sortedRecords(const CompletionLedgerV1& ledger) {
    std::vector<CompletionRecord> records;
    records.reserve(ledger.records.size());
    for (const auto& [identifier, record] : ledger.records)
        records.push_back(record);
    std::sort(records.begin(), records.end(), [](const CompletionRecord& a, const CompletionRecord& b) {
        return std::tie(a.completedAt, a.reminderIdentifier) < std::tie(b.completedAt, b.reminderIdentifier);
    });
    return records;
}

QByteArray encodeLedger(const CompletionLedgerV1& ledger) {
    QJsonObject records;
    for (const auto& [identifier, record] : ledger.records)
        records.insert(identifier, encode(record));
    const QJsonObject root{{didBackfillKey, ledger.didBackfill},
                           {recordsKey, records},
                           {schemaVersionKey, ledger.schemaVersion}};
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

std::optional<CompletionLedgerV1> decodeLedger(const QByteArray& document) {
    const QJsonObject root = QJsonDocument::fromJson(document).object();
    const QJsonValue records = root.value(recordsKey);
    const QJsonValue didBackfill = root.value(didBackfillKey);
    if (decodeInteger(root.value(schemaVersionKey)) != currentSchemaVersion || !records.isObject() ||
        !didBackfill.isBool())
        return std::nullopt;

    CompletionLedgerV1 ledger;
    ledger.didBackfill = didBackfill.toBool();
    const QJsonObject recordObjects = records.toObject();
    for (auto entry = recordObjects.begin(); entry != recordObjects.end(); ++entry) {
        std::optional<CompletionRecord> record = decodeRecord(entry.value());
        if (!record)
            return std::nullopt;
        ledger.records.insert_or_assign(entry.key(), std::move(*record));
    }
    return ledger;
}

}  // namespace kestrant
