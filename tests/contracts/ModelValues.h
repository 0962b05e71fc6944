#pragma once

#include "ModelHouses.h"
#include "foundation/TimeZone.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant::model {

/// What is seen of an item, by property; a property without a value is absent.
using Values = std::map<QString, QString>;
/// An occurrence of the model: its event's identifier, and the start the rule gives it.
using EventKey = std::pair<QString, QString>;
using Code = std::optional<EKError::Code>;

inline const TimeZone paris{*TimeZone::named("Europe/Paris")};
inline const QDate today{2026, 3, 27};

template <typename T>
const T& oneOf(const std::vector<T>& values, unsigned choice) {
    return values[choice % values.size()];
}

[[nodiscard]] QString textOf(Instant instant, const char* timeFormat = "HH:mm");
[[nodiscard]] Values without(Values values, const char* property);
[[nodiscard]] QString valueOf(const Values& values, const char* property);
[[nodiscard]] EventKey keyOf(const EKEventData& data);
[[nodiscard]] QString shown(const Values& values);
[[nodiscard]] QString shownCode(const Code& code);

/// The property-by-property merge of an edit with what is there now; absent where both changed the same.
[[nodiscard]] std::optional<Values> merged(const Values& base, const Values& edited, Values current);
/// Carries a completion out: a series goes on, and the copy of what was completed is returned.
std::optional<Values> completed(Values& values);

/// Gives a property another value, or takes it away.
void change(EKReminderData& data, unsigned property, unsigned value);
void change(EKEventData& data, unsigned property, unsigned value);

/// What the parts of the model share: the data, who uses it, and what was done.
struct World {
    EKEventStore& store;
    ManualScheduler& scheduler;
    OtherProgram& others;
    EventStoreDriver driver{store, scheduler};
    std::vector<QString> lists;
    std::vector<QString> calendars;
    /// Others have changed something that the store may not have noticed yet.
    bool isUnsettled = false;
    QStringList log;

    void note(const QString& line) { log.append(line); }
    [[nodiscard]] Values valuesOf(const EKReminderData& data) const;
    [[nodiscard]] Values valuesOf(const EKEventData& data) const;
};

}  // namespace kestrant::model
