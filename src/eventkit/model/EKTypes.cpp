#include "eventkit/model/EKTypes.h"

#include "eventkit/recurrence/RecurrenceRule.h"

#include <algorithm>
#include <tuple>

namespace kestrant {

std::optional<Color> Color::parse(QStringView text) {
    if ((text.size() != 7 && text.size() != 9) || text.front() != u'#')
        return std::nullopt;
    std::uint32_t value = 0;
    for (const QChar character : text.sliced(1)) {
        const char16_t unit = character.toLower().unicode();
        if (unit >= u'0' && unit <= u'9')
            value = value * 16 + (unit - u'0');
        else if (unit >= u'a' && unit <= u'f')
            value = value * 16 + (unit - u'a' + 10);
        else
            return std::nullopt;
    }
    if (text.size() == 9)
        value >>= 8;
    return Color{static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
                 static_cast<std::uint8_t>(value)};
}

QString Color::toString() const {
    return QString::asprintf("#%02X%02X%02X", red, green, blue);
}

bool EKAlarm::operator==(const EKAlarm& other) const {
    const auto parts = [](const EKAlarm& alarm) {
        return std::tie(alarm.relativeOffset, alarm.structuredLocation, alarm.proximity, alarm.sourceText,
                        alarm.identifier, alarm.acknowledgedDate, alarm.snoozedAlarm);
    };
    if (parts(*this) != parts(other))
        return false;
    return relativeOffset ? relativeDays == other.relativeDays && followsStart == other.followsStart
                          : absoluteDate == other.absoluteDate;
}

EKRecurrenceRule EKRecurrenceRule::parse(const QString& text) {
    EKRecurrenceRule rule{.text = text};
    const auto parsed = icalendar::RecurrenceRule::parse(text.toUtf8());
    if (!parsed)
        return rule;
    rule.interval = parsed->interval;
    using Frequency = icalendar::RecurrenceRule::Frequency;
    switch (parsed->frequency) {
    case Frequency::daily:
        rule.frequency = EKRecurrenceFrequency::daily;
        break;
    case Frequency::weekly:
        rule.frequency = EKRecurrenceFrequency::weekly;
        break;
    case Frequency::monthly:
        rule.frequency = EKRecurrenceFrequency::monthly;
        break;
    case Frequency::yearly:
        rule.frequency = EKRecurrenceFrequency::yearly;
        break;
    case Frequency::hourly:
    case Frequency::minutely:
    case Frequency::secondly:
        return rule;
    }
    rule.isSimple = !parsed->count && !parsed->until && !parsed->hasByParts();
    return rule;
}

EKRecurrenceRule EKRecurrenceRule::every(EKRecurrenceFrequency frequency, int interval) {
    const char* name = nullptr;
    switch (frequency) {
    case EKRecurrenceFrequency::daily:
        name = "DAILY";
        break;
    case EKRecurrenceFrequency::weekly:
        name = "WEEKLY";
        break;
    case EKRecurrenceFrequency::monthly:
        name = "MONTHLY";
        break;
    case EKRecurrenceFrequency::yearly:
        name = "YEARLY";
        break;
    case EKRecurrenceFrequency::other:
        return {};
    }
    QString text = QStringLiteral("FREQ=") + QLatin1String(name);
    if (interval > 1)
        text += QStringLiteral(";INTERVAL=%1").arg(interval);
    return parse(text);
}

bool areValidRules(const std::vector<EKRecurrenceRule>& edited, const std::vector<EKRecurrenceRule>& before) {
    return std::all_of(edited.begin(), edited.end(), [&](const EKRecurrenceRule& rule) {
        return std::find(before.begin(), before.end(), rule) != before.end() ||
               icalendar::RecurrenceRule::parse(rule.text.toUtf8());
    });
}

}  // namespace kestrant
