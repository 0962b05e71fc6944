#include "reminders/quickadd/QuickAddWords.h"

#include <QHash>
#include <QSet>

namespace kestrant::quickadd {
namespace {

template <typename Value>
std::optional<Value> find(const QHash<QString, Value>& words, const QString& word) {
    const auto found = words.constFind(word);
    return found == words.cend() ? std::nullopt : std::optional(*found);
}

/// The words of one text, each with its place from 1.
void addNames(QHash<QString, Named>& names, const char* words, Clarity clarity) {
    int number = 0;
    for (const QString& alternatives : QString::fromLatin1(words).split(QLatin1Char(' '))) {
        ++number;
        for (const QString& word : alternatives.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
            if (word != QLatin1String("-"))
                names.insert(word, {number, clarity});
        }
    }
}

QSet<QString> wordSet(const char* words) {
    const QStringList list = QString::fromLatin1(words).split(QLatin1Char(' '));
    return {list.begin(), list.end()};
}

}  // namespace

std::optional<Named> weekdayNamed(const QString& word) {
    static const QHash<QString, Named> names = [] {
        QHash<QString, Named> result;
        addNames(result, "monday tuesday wednesday thursday friday saturday sunday", Clarity::clear);
        addNames(result, "lundi mardi mercredi jeudi vendredi samedi dimanche", Clarity::clear);
        addNames(result, "- tue/tues - thu/thur/thurs fri - -", Clarity::ambiguous);
        addNames(result, "mon/lun - wed/mer jeu ven sat/sam sun/dim", Clarity::unclear);
        return result;
    }();
    return find(names, word);
}

std::optional<Named> monthNamed(const QString& word) {
    static const QHash<QString, Named> names = [] {
        QHash<QString, Named> result;
        addNames(result, "january february - april - june july august september october november december",
                 Clarity::clear);
        addNames(result, "janvier fevrier - avril mai juin juillet aout septembre octobre novembre decembre",
                 Clarity::clear);
        addNames(result, "janv feb/fev/fevr - apr/avr - jun/juin jul/juil aug - oct nov dec", Clarity::clear);
        addNames(result, "jan - march/mars/mar - may - - - sep/sept - - -", Clarity::ambiguous);
        return result;
    }();
    return find(names, word);
}

std::optional<DayPart> dayPartNamed(const QString& word) {
    static const QHash<QString, DayPart> parts{
        {QStringLiteral("morning"), DayPart::morning},     {QStringLiteral("matin"), DayPart::morning},
        {QStringLiteral("afternoon"), DayPart::afternoon}, {QStringLiteral("apres-midi"), DayPart::afternoon},
        {QStringLiteral("aprem"), DayPart::afternoon},     {QStringLiteral("evening"), DayPart::evening},
        {QStringLiteral("soir"), DayPart::evening},        {QStringLiteral("night"), DayPart::night},
        {QStringLiteral("nuit"), DayPart::night},
    };
    return find(parts, word);
}

std::optional<int> numberNamed(const QString& word) {
    static const QHash<QString, int> numbers = [] {
        QHash<QString, int> result;
        const auto add = [&](const char* words) {
            int number = 0;
            for (const QString& alternatives : QString::fromLatin1(words).split(QLatin1Char(' '))) {
                ++number;
                for (const QString& each : alternatives.split(QLatin1Char('/')))
                    result.insert(each, number);
            }
        };
        add("a/an/one two three four five six seven eight nine ten eleven twelve");
        add("un/une deux trois quatre cinq six sept huit neuf dix onze douze");
        result.insert(QStringLiteral("fifteen"), 15);
        result.insert(QStringLiteral("quinze"), 15);
        result.insert(QStringLiteral("twenty"), 20);
        result.insert(QStringLiteral("vingt"), 20);
        result.insert(QStringLiteral("thirty"), 30);
        result.insert(QStringLiteral("trente"), 30);
        return result;
    }();
    return find(numbers, word);
}

std::optional<Unit> unitNamed(const QString& word) {
    static const QHash<QString, Unit> units = [] {
        QHash<QString, Unit> result;
        const auto add = [&](Unit unit, const char* words) {
            for (const QString& each : QString::fromLatin1(words).split(QLatin1Char(' ')))
                result.insert(each, unit);
        };
        add(Unit::minutes, "minute minutes min mins mn");
        add(Unit::hours, "hour hours hr hrs heure heures h");
        add(Unit::days, "day days jour jours d j");
        add(Unit::weeks, "week weeks semaine semaines w sem");
        add(Unit::fortnights, "fortnight fortnights quinzaine");
        add(Unit::months, "month months mois");
        add(Unit::years, "year years an ans annee annees");
        return result;
    }();
    return find(units, word);
}

bool isConnector(const QString& word) {
    static const QSet<QString> words =
        wordSet("at @ with for to and about from by on before after in re because when if until till noon "
                "midnight avec pour a chez et dans sur avant apres vers au aux car si des midi minuit");
    return words.contains(word) || dayPartNamed(word).has_value();
}

bool forbidsDay(const QString& word) {
    static const QSet<QString> words = wordSet(
        "every each last since until till through past all any black good cyber casual freaky palm easter "
        "ash fat shrove maundy holy blue bloody super ruby usa first second third fourth after chaque tous "
        "toutes depuis jusqu'a jusqu'au premier premiere deuxieme troisieme quatrieme apres "
        "du de des le");
    return words.contains(word);
}

bool forbidsHours(const QString& word) {
    static const QSet<QString> words =
        wordSet("pendant durant for during every toutes tous chaque de les en");
    return words.contains(word);
}

bool forbidsClock(const QString& word) {
    static const QSet<QString> words = wordSet(
        "john matthew mark luke genesis romans psalm psalms acts jean matthieu marc luc psaume psaumes "
        "romains");
    return words.contains(word);
}

}  // namespace kestrant::quickadd
