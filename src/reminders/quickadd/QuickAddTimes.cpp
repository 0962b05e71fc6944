#include "reminders/quickadd/QuickAddDates.h"
#include "reminders/quickadd/QuickAddReading.h"
#include "reminders/quickadd/QuickAddWords.h"

#include <chrono>

namespace kestrant::quickadd {
namespace {

using Kind = Token::Kind;

/// When a working day is over.
const QTime endOfWork(18, 0);

class TimeFinder : private Reading {
  public:
    TimeFinder(const Reading& reading, const Present& present)
        : Reading(reading)
        , present_(present)
        , today_(present.today()) {}

    [[nodiscard]] std::optional<Phrase> clock(std::size_t i, bool followsDay) const {
        std::size_t at = i;
        if (areWords(i, QLatin1String("a partir de")))
            at = i + 3;
        else if (isOneOf(word(i), {"at", "@", "around", "by", "before", "from", "for", "a", "vers", "avant",
                                   "des", "pour", "de", "entre", "between"}))
            at = i + 1;
        // "a 5pm meeting" is English.
        if (word(i) == QLatin1String("a") && isKind(at, Kind::clock) && !token(at).text.isEmpty())
            return std::nullopt;
        const bool isLed = at != i;
        const bool needsRange = isLed && isOneOf(word(i), {"de", "entre", "between"});
        auto found = time(at, isLed ? word(i) : QString(), followsDay, wordBefore(at));
        if (!found)
            return std::nullopt;
        const auto rangeEnd = pastRange(found->end);
        if (needsRange && rangeEnd == found->end)
            return std::nullopt;
        found->end = rangeEnd;
        addPart(*found);
        return found;
    }

    /// "morning" behind a day; "in the morning" by itself, the next one.
    [[nodiscard]] std::optional<Phrase> partOfDay(std::size_t i, bool followsDay) const {
        auto at = past(i, QLatin1String("in the"));
        auto part = dayPartNamed(word(at));
        if (areWords(i, QLatin1String("dans l'apres-midi")) || areWords(i, QLatin1String("dans la soiree")) ||
            areWords(i, QLatin1String("dans la matinee"))) {
            at = word(i + 1) == QLatin1String("la") ? i + 2 : i + 1;
            part = word(at) == QLatin1String("soiree")    ? DayPart::evening
                   : word(at) == QLatin1String("matinee") ? DayPart::morning
                                                          : DayPart::afternoon;
        }
        if (!part || (!followsDay && at == i))
            return std::nullopt;
        Phrase found{.end = at + 1, .time = usualTime(*part), .part = part};
        if (followsDay)
            return found;
        if (!isEnd(at + 1) || *part == DayPart::night)
            return std::nullopt;
        const bool isOver = present_.zone.timeOf(present_.now) >= usualTime(*part);
        found.day = today_.addDays(isOver ? 1 : 0);
        return found;
    }

    [[nodiscard]] std::optional<Phrase> relative(std::size_t i) const {
        if (isOneOf(word(i), {"in", "dans", "d'ici", "within", "sous"})) {
            auto found = amount(i + 1);
            if (!found)
                return std::nullopt;
            found->end = past(found->end, QLatin1String("time"));
            return later(*found);
        }
        auto found = amount(i);
        if (!found || !(areWords(found->end, QLatin1String("from now")) ||
                        areWords(found->end, QLatin1String("from today"))))
            return std::nullopt;
        found->end += 2;
        return later(*found);
    }

  private:
    [[nodiscard]] static Phrase atTime(std::size_t end, int hour, int minute) {
        return Phrase{.end = end, .time = QTime(hour, minute), .isOfTwelve = hour >= 1 && hour <= 12};
    }

    [[nodiscard]] std::optional<Phrase> time(std::size_t i, const QString& lead, bool followsDay,
                                             const QString& before) const {
        if (isKind(i, Kind::clock)) {
            const Token& here = token(i);
            if (!here.isWholeDayClock && forbidsClock(before))
                return std::nullopt;
            Phrase found = atTime(i + 1, here.number, here.minute);
            found.isOfTwelve = !here.isWholeDayClock;
            found.isVagueHour = found.isOfTwelve && present_.language == Language::english;
            return found;
        }
        if (isKind(i, Kind::clockOfHours)) {
            const bool isLength =
                word(i + 1) == QLatin1String("de") && !isOneOf(word(i + 2), {"l'apres-midi", "la"});
            if ((forbidsHours(before) && lead != QLatin1String("de")) || (lead.isEmpty() && isLength))
                return std::nullopt;
            return atTime(i + 1, token(i).number, token(i).minute);
        }
        if (isKind(i, Kind::number) && token(i).number <= 23)
            return timeInNumbers(i, lead);
        if (auto found = spokenTime(i))
            return found;
        return namedTime(i, lead, followsDay);
    }

    /// "9 heures 30", "9 h 30", "5 o'clock", "at 5".
    [[nodiscard]] std::optional<Phrase> timeInNumbers(std::size_t i, const QString& lead) const {
        const int hour = token(i).number;
        if (word(i + 1) == QLatin1String("o'clock")) {
            Phrase found = atTime(i + 2, hour, 0);
            found.isVagueHour = found.isOfTwelve;
            return found;
        }
        if (isOneOf(word(i + 1), {"h", "heure", "heures"})) {
            if (isKind(i + 2, Kind::number) && token(i + 2).number <= 59)
                return atTime(i + 3, hour, token(i + 2).number);
            if (areWords(i + 2, QLatin1String("et demie")))
                return atTime(i + 4, hour, 30);
            if (areWords(i + 2, QLatin1String("et quart")))
                return atTime(i + 4, hour, 15);
            if (areWords(i + 2, QLatin1String("moins le quart")) && hour > 0)
                return atTime(i + 5, hour - 1, 45);
            // "9 heures" alone may as well be a length.
            return isOneOf(lead, {"a", "vers", "avant", "des"}) ? std::optional(atTime(i + 2, hour, 0))
                                                                : std::nullopt;
        }
        const bool goesOn = isOneOf(word(i + 1), {"and", "or", "et", "ou"}) && isKind(i + 2, Kind::number);
        if (!isOneOf(lead, {"at", "@", "around"}) || !endsPhrase(i + 1) || goesOn)
            return std::nullopt;
        Phrase found = atTime(i + 1, hour, 0);
        found.isVagueHour = found.isOfTwelve;
        return found;
    }

    /// "half past five", "quarter to 6".
    [[nodiscard]] std::optional<Phrase> spokenTime(std::size_t i) const {
        int minutes = 0;
        if (areWords(i, QLatin1String("half past")))
            minutes = 30;
        else if (areWords(i, QLatin1String("quarter past")))
            minutes = 15;
        else if (areWords(i, QLatin1String("quarter to")))
            minutes = -15;
        else
            return std::nullopt;
        const auto hour =
            isKind(i + 2, Kind::number) ? std::optional(token(i + 2).number) : numberNamed(word(i + 2));
        if (!hour || *hour < 1 || *hour > 12)
            return std::nullopt;
        const QTime time = QTime(*hour, 0).addSecs(minutes * 60);
        return Phrase{.end = i + 3, .time = time, .isOfTwelve = true, .isVagueHour = true};
    }

    [[nodiscard]] std::optional<Phrase> namedTime(std::size_t i, const QString& lead, bool followsDay) const {
        if (const auto end = pastEndOfDay(i))
            return Phrase{.end = *end, .time = endOfWork};
        const QString name = word(i);
        const bool isNoon = isOneOf(name, {"noon", "midday", "midi"});
        const bool isMidnight = isOneOf(name, {"midnight", "minuit"});
        if (!isNoon && !isMidnight)
            return std::nullopt;
        const bool isHelped = followsDay || isOneOf(lead, {"at", "@", "around", "by", "before", "a", "vers",
                                                           "avant", "pour", "des"});
        const bool standsAlone =
            name != QLatin1String("midi") && isEnd(i + 1) && !isOneOf(wordBefore(i), {"high", "after", "de"});
        if (!isHelped && !standsAlone)
            return std::nullopt;
        return Phrase{.end = i + 1, .time = isNoon ? QTime(12, 0) : QTime(0, 0)};
    }

    /// Behind "end of day", "en fin de journée".
    [[nodiscard]] std::optional<std::size_t> pastEndOfDay(std::size_t i) const {
        if (word(i) == QLatin1String("eod"))
            return i + 1;
        for (const char* words :
             {"end of the day", "end of day", "en fin de journee", "fin de journee", "fin de la journee"}) {
            if (areWords(i, QLatin1String(words)))
                return past(i, QLatin1String(words));
        }
        return std::nullopt;
    }

    /// Behind the end of a span of time that begins before `i`: "to 4pm", "à 16h".
    [[nodiscard]] std::size_t pastRange(std::size_t i) const {
        const bool goesOn = isOneOf(word(i), {"to", "till", "until", "a", "et", "and", "jusqu'a"}) ||
                            isSign(i, "-") || isSign(i, "–");
        if (!goesOn)
            return i;
        const bool isTime = isKind(i + 1, Kind::clock) || isKind(i + 1, Kind::clockOfHours);
        return isTime ? i + 2 : i;
    }

    /// "in the morning", "du soir" behind a time.
    void addPart(Phrase& found) const {
        std::size_t at = found.end;
        if (areWords(at, QLatin1String("in the")) || areWords(at, QLatin1String("de la")))
            at += 2;
        else if (areWords(at, QLatin1String("at night")) || word(at) == QLatin1String("du"))
            at += 1;
        else if (areWords(at, QLatin1String("de l'apres-midi"))) {
            found.part = DayPart::afternoon;
            found.end = at + 2;
            return;
        } else
            return;
        if (const auto part = dayPartNamed(word(at))) {
            found.part = part;
            found.end = at + 1;
        }
    }

    struct Amount {
        std::size_t end = 0;
        Unit unit = Unit::days;
        int count = 0;
        int minutes = 0;
    };

    [[nodiscard]] std::optional<Amount> amount(std::size_t i) const {
        if (isKind(i, Kind::clockOfHours))
            return Amount{i + 1, Unit::hours, token(i).number, token(i).minute};
        if (isKind(i, Kind::quantity))
            return Amount{i + 1, unitNamed(token(i).text).value_or(Unit::minutes), token(i).number, 0};
        if (areWords(i, QLatin1String("half an hour")))
            return Amount{i + 3, Unit::minutes, 30, 0};
        if (areWords(i, QLatin1String("une demi-heure")))
            return Amount{i + 2, Unit::minutes, 30, 0};
        std::optional<int> count;
        if (isKind(i, Kind::number))
            count = token(i).number;
        else
            count = numberNamed(word(i));
        auto unitAt = i + 1;
        if (areWords(i, QLatin1String("a couple of"))) {
            count = 2;
            unitAt = i + 3;
        }
        const auto unit = unitNamed(word(unitAt));
        if (!count || !unit)
            return std::nullopt;
        return Amount{unitAt + 1, *unit, *count, 0};
    }

    [[nodiscard]] std::optional<Phrase> later(const Amount& amount) const {
        switch (amount.unit) {
        case Unit::minutes:
        case Unit::hours: {
            const auto count = std::chrono::minutes((amount.unit == Unit::hours ? 60 : 1) *
                                                        std::chrono::minutes::rep(amount.count) +
                                                    amount.minutes);
            const Instant then = std::chrono::ceil<std::chrono::minutes>(present_.now + count);
            return Phrase{
                .end = amount.end, .day = present_.zone.dayOf(then), .time = present_.zone.timeOf(then)};
        }
        case Unit::days:
            return Phrase{.end = amount.end, .day = today_.addDays(amount.count)};
        case Unit::weeks:
            return Phrase{.end = amount.end, .day = today_.addDays(7LL * amount.count)};
        case Unit::fortnights:
            return Phrase{.end = amount.end, .day = today_.addDays(14LL * amount.count)};
        case Unit::months:
        case Unit::years: {
            const int months = amount.unit == Unit::years ? 12 * amount.count : amount.count;
            if (months > 1200)
                return std::nullopt;
            return Phrase{.end = amount.end, .day = today_.addMonths(months)};
        }
        }
        return std::nullopt;
    }

    const Present& present_;
    const QDate today_;
};

}  // namespace

std::optional<Phrase> findTime(const Reading& reading, std::size_t i, bool followsDay,
                               const Present& present) {
    const TimeFinder finder(reading, present);
    std::optional<Phrase> best;
    for (const auto& found :
         {finder.clock(i, followsDay), finder.partOfDay(i, followsDay), finder.relative(i)}) {
        if (found && (!best || found->end > best->end))
            best = found;
    }
    return best;
}

QTime usualTime(DayPart part) {
    switch (part) {
    case DayPart::morning:
        return {9, 0};
    case DayPart::afternoon:
        return {15, 0};
    case DayPart::evening:
        return {19, 0};
    case DayPart::night:
        return {21, 0};
    }
    return {};
}

}  // namespace kestrant::quickadd
