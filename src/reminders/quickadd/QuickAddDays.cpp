#include "reminders/quickadd/QuickAddDates.h"
#include "reminders/quickadd/QuickAddReading.h"
#include "reminders/quickadd/QuickAddWords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kestrant::quickadd {
namespace {

using Kind = Token::Kind;

/// The date with this day of the month, or this day and month, that comes next; today counts. Absent for one
/// that never comes.
std::optional<QDate> nextDate(QDate today, std::optional<int> month, int day) {
    for (int ahead = 0; ahead <= 12 * 8; ++ahead) {
        const QDate first = QDate(today.year(), today.month(), 1).addMonths(ahead);
        const QDate date(first.year(), first.month(), day);
        if (date.isValid() && date >= today && (!month || first.month() == *month))
            return date;
    }
    return std::nullopt;
}

/// Words that lead to a day: "by", "due on the", "à partir de".
struct Lead {
    std::size_t end = 0;
    bool isThere = false;
    /// Whether the words end with an article: "on the 5th", "le 5".
    bool hasArticle = false;
};

class DayFinder : private Reading {
  public:
    DayFinder(const Reading& reading, const Present& present)
        : Reading(reading)
        , present_(present)
        , today_(present.today()) {}

    [[nodiscard]] std::optional<Phrase> day(std::size_t i, bool followsPhrase) const {
        if (forbidsDay(wordBefore(i)) || followsAnotherDay(i))
            return std::nullopt;
        const Lead before = lead(i);
        auto found = namedDay(before.end);
        if (!found)
            found = weekday(before.end, before, i == 0 || followsPhrase);
        if (!found)
            found = date(before.end, before);
        if (!found && !before.isThere)
            found = wholeMonth(i);
        if (found && joins(found->end) && isPartOfDate(found->end + 1))
            return std::nullopt;
        return found;
    }

  private:
    [[nodiscard]] Lead lead(std::size_t i) const {
        struct Words {
            QLatin1String words;
            bool hasArticle;
        };
        static const std::array leads{
            Words{QLatin1String("a partir de"), false}, Words{QLatin1String("a partir du"), true},
            Words{QLatin1String("due on the"), true},   Words{QLatin1String("due by the"), true},
            Words{QLatin1String("due on"), false},      Words{QLatin1String("due by"), false},
            Words{QLatin1String("due the"), true},      Words{QLatin1String("due"), false},
            Words{QLatin1String("on the"), true},       Words{QLatin1String("by the"), true},
            Words{QLatin1String("before the"), true},   Words{QLatin1String("for the"), true},
            Words{QLatin1String("on"), false},          Words{QLatin1String("by"), false},
            Words{QLatin1String("before"), false},      Words{QLatin1String("for"), false},
            Words{QLatin1String("from"), false},        Words{QLatin1String("starting"), false},
            Words{QLatin1String("pour le"), true},      Words{QLatin1String("avant le"), true},
            Words{QLatin1String("d'ici le"), true},     Words{QLatin1String("des le"), true},
            Words{QLatin1String("le"), true},           Words{QLatin1String("pour"), false},
            Words{QLatin1String("avant"), false},       Words{QLatin1String("d'ici"), false},
            Words{QLatin1String("des"), false},         Words{QLatin1String("au"), false},
        };
        for (const Words& each : leads) {
            if (areWords(i, each.words))
                return {past(i, each.words), true, each.hasArticle};
        }
        return {i, false, false};
    }

    /// "and", "to", "-": where there is a day on both sides, neither is meant.
    [[nodiscard]] bool joins(std::size_t i) const {
        return isOneOf(word(i), {"and", "or", "et", "ou", "to", "till", "until", "through", "au"}) ||
               isSign(i, "&") || isSign(i, "-") || isSign(i, "–");
    }
    [[nodiscard]] bool isPartOfDate(std::size_t i) const {
        return weekdayNamed(word(i)) || monthNamed(word(i)) ||
               isOneOf(word(i), {"today", "tomorrow", "demain"}) || isKind(i, Kind::date) ||
               isKind(i, Kind::ordinal) || (isKind(i, Kind::number) && monthNamed(word(i + 1)));
    }
    [[nodiscard]] bool followsAnotherDay(std::size_t i) const {
        const auto joint = joins(i) ? i : i - 1;
        return i > 0 && joint > 0 && joins(joint) &&
               (isPartOfDate(joint - 1) ||
                (isKind(joint - 1, Kind::number) && joint >= 2 &&
                 (word(joint - 2) == QLatin1String("du") || monthNamed(word(joint - 2)))));
    }

    [[nodiscard]] static Phrase onDay(std::size_t end, QDate day) { return Phrase{.end = end, .day = day}; }
    [[nodiscard]] static Phrase onDay(std::size_t end, QDate day, DayPart part) {
        return Phrase{.end = end, .day = day, .time = usualTime(part), .part = part};
    }
    [[nodiscard]] QDate startOfNextWeek() const { return today_.addDays(8 - today_.dayOfWeek()); }

    /// Days that have names of their own, and those of weeks, months and years.
    [[nodiscard]] std::optional<Phrase> namedDay(std::size_t i) const {
        const QString name = word(i);
        if (name.isEmpty() || word(i + 1) == QLatin1String("show"))
            return std::nullopt;
        if (isOneOf(name, {"today", "aujourd'hui"}))
            return onDay(i + 1, today_);
        if (name == QLatin1String("tonight"))
            return onDay(i + 1, today_, DayPart::evening);
        if (isOneOf(name, {"tomorrow", "tmrw", "tmr", "tomorow", "tommorow", "tommorrow", "demain"}))
            return onDay(i + 1, today_.addDays(1));
        if (name == QLatin1String("apres-demain"))
            return onDay(i + 1, today_.addDays(2));
        if (areWords(i, QLatin1String("apres demain")))
            return onDay(i + 2, today_.addDays(2));
        if (const auto from = past(i, QLatin1String("the"));
            areWords(from, QLatin1String("day after tomorrow")))
            return onDay(from + 3, today_.addDays(2));
        if (isOneOf(name, {"this", "ce", "cet", "cette"}))
            return thisDay(i + 1);
        if (name == QLatin1String("next"))
            return nextDay(i + 1);
        if (auto found = frenchNext(i))
            return found;
        return endOfSpan(i);
    }

    [[nodiscard]] std::optional<Phrase> thisDay(std::size_t i) const {
        const auto part = dayPartNamed(word(i));
        if (part && (*part != DayPart::night || endsPhrase(i + 1)))
            return onDay(i + 1, today_, *part);
        if (word(i) == QLatin1String("midi"))
            return Phrase{.end = i + 1, .day = today_, .time = QTime(12, 0)};
        if (isOneOf(word(i), {"weekend", "week-end"}))
            return onDay(i + 1, today_.dayOfWeek() >= Qt::Saturday
                                    ? today_
                                    : today_.addDays(Qt::Saturday - today_.dayOfWeek()));
        const auto named = weekdayNamed(word(i));
        if (!named || (named->clarity != Clarity::clear && !endsPhrase(i + 1)))
            return std::nullopt;
        return onDay(i + 1, today_.addDays((named->number - today_.dayOfWeek() + 7) % 7));
    }

    [[nodiscard]] std::optional<Phrase> nextDay(std::size_t i) const {
        if (word(i) == QLatin1String("week"))
            return onDay(i + 1, startOfNextWeek());
        if (isOneOf(word(i), {"weekend", "week-end"}))
            return onDay(i + 1, startOfNextWeek().addDays(Qt::Saturday - 1));
        if (word(i) == QLatin1String("month"))
            return onDay(i + 1, QDate(today_.year(), today_.month(), 1).addMonths(1));
        if (word(i) == QLatin1String("year"))
            return onDay(i + 1, QDate(today_.year() + 1, 1, 1));
        const auto named = weekdayNamed(word(i));
        if (!named || (named->clarity != Clarity::clear && !endsPhrase(i + 1)))
            return std::nullopt;
        return onDay(i + 1, startOfNextWeek().addDays(named->number - 1));
    }

    /// "la semaine prochaine", "le mois prochain", "l'an prochain".
    [[nodiscard]] std::optional<Phrase> frenchNext(std::size_t i) const {
        const auto from = isOneOf(word(i), {"la", "le"}) ? i + 1 : i;
        if (!isOneOf(word(from + 1), {"prochain", "prochaine"}))
            return std::nullopt;
        const QString span = word(from);
        if (span == QLatin1String("semaine"))
            return onDay(from + 2, startOfNextWeek());
        if (isOneOf(span, {"week-end", "weekend"}))
            return onDay(from + 2, startOfNextWeek().addDays(Qt::Saturday - 1));
        if (span == QLatin1String("mois"))
            return onDay(from + 2, QDate(today_.year(), today_.month(), 1).addMonths(1));
        if (isOneOf(span, {"l'annee", "annee", "l'an"}))
            return onDay(from + 2, QDate(today_.year() + 1, 1, 1));
        return std::nullopt;
    }

    /// "end of the month", "fin de semaine", "fin avril".
    [[nodiscard]] std::optional<Phrase> endOfSpan(std::size_t i) const {
        if (word(i) == QLatin1String("eom"))
            return endOf(Unit::months, i + 1);
        if (areWords(i, QLatin1String("end of"))) {
            const auto span = past(past(i + 2, QLatin1String("the")), QLatin1String("this"));
            if (const auto month = monthNamed(word(span)))
                return endOfMonth(month->number, span + 1);
            const auto unit = unitNamed(word(span));
            return unit ? endOf(*unit, span + 1) : std::nullopt;
        }
        const auto from = past(past(i, QLatin1String("a la")), QLatin1String("la"));
        if (word(from) != QLatin1String("fin"))
            return std::nullopt;
        if (const auto month = monthNamed(word(from + 1)); month && word(from + 1).size() > 2)
            return endOfMonth(month->number, from + 2);
        if (isOneOf(word(from + 1), {"d'annee", "d'an"}))
            return endOf(Unit::years, from + 2);
        if (!isOneOf(word(from + 1), {"de", "du"}))
            return std::nullopt;
        const auto span = past(from + 2, QLatin1String("la"));
        if (word(span) == QLatin1String("l'annee"))
            return endOf(Unit::years, span + 1);
        const auto unit = unitNamed(word(span));
        return unit ? endOf(*unit, span + 1) : std::nullopt;
    }
    [[nodiscard]] std::optional<Phrase> endOf(Unit unit, std::size_t end) const {
        switch (unit) {
        case Unit::weeks:
            return onDay(end, today_.addDays(std::max(0, Qt::Friday - today_.dayOfWeek())));
        case Unit::months:
            return endOfMonth(today_.month(), end);
        case Unit::years:
            return onDay(end, QDate(today_.year(), 12, 31));
        default:
            return std::nullopt;
        }
    }
    [[nodiscard]] std::optional<Phrase> endOfMonth(int month, std::size_t end) const {
        const QDate first(today_.year() + (month < today_.month() ? 1 : 0), month, 1);
        return onDay(end, QDate(first.year(), month, first.daysInMonth()));
    }

    [[nodiscard]] std::optional<Phrase> weekday(std::size_t i, const Lead& before, bool isFirst) const {
        const auto named = weekdayNamed(word(i));
        const bool isCounted = i > 0 && isKind(i - 1, Kind::ordinal);
        if (!named || isCounted || wordBefore(i) == QLatin1String("the"))
            return std::nullopt;
        if (auto found = weekdayWithDate(i, *named))
            return found;
        const QDate next = today_.addDays((named->number - today_.dayOfWeek() + 6) % 7 + 1);
        if (isOneOf(word(i + 1), {"prochain", "prochaine"}))
            return onDay(i + 2, next);
        if (isOneOf(word(i + 1), {"dernier", "derniere", "passe"}))
            return std::nullopt;
        if (word(i + 1) == QLatin1String("en") && isOneOf(word(i + 2), {"huit", "quinze"}))
            return onDay(i + 3, next.addDays(word(i + 2) == QLatin1String("huit") ? 7 : 14));
        // "le lundi" is every Monday.
        if (before.hasArticle)
            return std::nullopt;
        const bool hasEnd = endsPhrase(i + 1);
        switch (named->clarity) {
        case Clarity::clear:
            if (!before.isThere && !isFirst && !hasEnd)
                return std::nullopt;
            break;
        case Clarity::ambiguous:
            if (!hasEnd)
                return std::nullopt;
            break;
        case Clarity::unclear:
            // Names and words of every day: "sam", "mon", "sun".
            if (isOneOf(word(i), {"sam"}) ||
                !(isKind(i + 1, Kind::clock) || isTimeByName(i + 1) || (before.isThere && isEnd(i + 1)) ||
                  (isKind(i + 1, Kind::clockOfHours) && word(i) != QLatin1String("mon"))))
                return std::nullopt;
            break;
        }
        return onDay(i + 1, next);
    }

    /// "noon", "morning", and nothing after it.
    [[nodiscard]] bool isTimeByName(std::size_t i) const {
        return (dayPartNamed(word(i)) || isOneOf(word(i), {"noon", "midnight", "midi", "minuit"})) &&
               isEnd(i + 1);
    }

    /// "Friday, March 27", "lun. 30 mars", "lundi 30": the date counts.
    [[nodiscard]] std::optional<Phrase> weekdayWithDate(std::size_t i, const Named& named) const {
        std::size_t next = i + 1;
        if (isSign(next, ".") || isSign(next, ","))
            ++next;
        next = past(past(next, QLatin1String("the")), QLatin1String("le"));
        if (auto found = date(next, Lead{next, true, false}))
            return found;
        const bool isNumber = isKind(next, Kind::number) || isKind(next, Kind::ordinal);
        if (!isNumber || named.clarity == Clarity::unclear || !endsPhrase(next + 1))
            return std::nullopt;
        const auto found = nextDate(today_, std::nullopt, token(next).number);
        if (!found || found->dayOfWeek() != named.number)
            return std::nullopt;
        return onDay(next + 1, *found);
    }

    /// A date of the calendar.
    [[nodiscard]] std::optional<Phrase> date(std::size_t i, const Lead& before) const {
        if (isKind(i, Kind::date))
            return numericDate(i, before);
        if (auto found = dayAndMonth(i, before))
            return found;
        if (auto found = monthAndDay(i, before))
            return found;
        const bool isFrenchDay =
            before.hasArticle && wordBefore(i) == QLatin1String("le") && isKind(i, Kind::number);
        const bool isDay = (before.hasArticle && isKind(i, Kind::ordinal)) || isFrenchDay;
        if (!isDay || !endsPhrase(i + 1))
            return std::nullopt;
        const auto found = nextDate(today_, std::nullopt, token(i).number);
        return found ? std::optional(onDay(i + 1, *found)) : std::nullopt;
    }

    [[nodiscard]] std::optional<Phrase> numericDate(std::size_t i, const Lead& before) const {
        const Token& here = token(i);
        if (here.isIsoDate) {
            const QDate day(here.year, here.first, here.second);
            return day.isValid() ? std::optional(onDay(i + 1, day)) : std::nullopt;
        }
        // "24/7", "1/2" and the like.
        const bool isFraction = here.first < here.second && here.second <= 4;
        const bool isOften = here.second == 7 && (here.first == 24 || here.first == 7);
        if (here.year == 0 && !before.isThere && (isFraction || isOften || !endsPhrase(i + 1)))
            return std::nullopt;
        const bool monthFirst = present_.language == Language::english;
        for (const bool swapped : {false, true}) {
            const int month = monthFirst != swapped ? here.first : here.second;
            const int day = monthFirst != swapped ? here.second : here.first;
            if (here.year != 0 && QDate::isValid(here.year, month, day))
                return onDay(i + 1, QDate(here.year, month, day));
            if (here.year != 0 || month < 1 || month > 12)
                continue;
            if (const auto found = nextDate(today_, month, day))
                return onDay(i + 1, *found);
        }
        return std::nullopt;
    }

    /// A year of the past makes a date of history: "8 mai 1945".
    [[nodiscard]] bool isLongAgo(std::size_t i) const {
        return isKind(i, Kind::number) && token(i).number >= 1000 && token(i).number < 2000;
    }
    /// A year that follows, with where it ends.
    [[nodiscard]] std::pair<std::optional<int>, std::size_t> year(std::size_t i) const {
        const auto at = isSign(i, ",") ? i + 1 : i;
        if (isKind(at, Kind::number) && token(at).number >= 2000 && token(at).number <= 2199)
            return {token(at).number, at + 1};
        return {std::nullopt, i};
    }
    [[nodiscard]] std::optional<Phrase> dated(std::size_t end, std::optional<int> inYear, int month,
                                              int day) const {
        if (inYear)
            return QDate::isValid(*inYear, month, day) ? std::optional(onDay(end, QDate(*inYear, month, day)))
                                                       : std::nullopt;
        const auto found = nextDate(today_, month, day);
        return found ? std::optional(onDay(end, *found)) : std::nullopt;
    }

    /// "27 march", "27th of March 2027", "1er mai".
    [[nodiscard]] std::optional<Phrase> dayAndMonth(std::size_t i, const Lead& before) const {
        if (!isKind(i, Kind::number) && !isKind(i, Kind::ordinal))
            return std::nullopt;
        const auto monthAt = past(i + 1, QLatin1String("of"));
        const auto month = monthNamed(word(monthAt));
        if (!month)
            return std::nullopt;
        auto end = monthAt + 1;
        if (isSign(end, ".") && !isEnd(end + 1))
            ++end;
        const auto [inYear, yearEnd] = year(end);
        const bool isHelped = inYear || before.isThere || isKind(i, Kind::ordinal) || endsPhrase(monthAt + 1);
        if ((month->clarity != Clarity::clear && !isHelped) || isLongAgo(end))
            return std::nullopt;
        return dated(yearEnd, inYear, month->number, token(i).number);
    }

    /// "march 27", "May 5th, 2027".
    [[nodiscard]] std::optional<Phrase> monthAndDay(std::size_t i, const Lead& before) const {
        const auto month = monthNamed(word(i));
        const auto dayAt = isSign(i + 1, ".") ? i + 2 : i + 1;
        if (!month || !(isKind(dayAt, Kind::number) || isKind(dayAt, Kind::ordinal)))
            return std::nullopt;
        const auto [inYear, end] = year(dayAt + 1);
        const bool isHelped =
            inYear || before.isThere || isKind(dayAt, Kind::ordinal) || endsPhrase(dayAt + 1);
        if (!isHelped || token(dayAt).number > 31 || isLongAgo(end))
            return std::nullopt;
        return dated(end, inYear, month->number, token(dayAt).number);
    }

    /// "in april", "en mars 2027": its first day.
    [[nodiscard]] std::optional<Phrase> wholeMonth(std::size_t i) const {
        if (!isOneOf(word(i), {"in", "en"}) || word(i + 1).size() < 3)
            return std::nullopt;
        const auto month = monthNamed(word(i + 1));
        if (!month)
            return std::nullopt;
        const auto [inYear, end] = year(i + 2);
        if (inYear)
            return onDay(end, QDate(*inYear, month->number, 1));
        if (!isEnd(i + 2) || month->number == today_.month())
            return std::nullopt;
        return dated(i + 2, std::nullopt, month->number, 1);
    }

    const Present& present_;
    const QDate today_;
};

}  // namespace

std::optional<Phrase> findDay(const Reading& reading, std::size_t i, bool followsPhrase,
                              const Present& present) {
    return DayFinder(reading, present).day(i, followsPhrase);
}

}  // namespace kestrant::quickadd
