#include "speech/Zones.h"

#include <QByteArray>
#include <QHash>
#include <QTimeZone>

#include <algorithm>
#include <array>

namespace kestrant::speech {
namespace {

using Kind = Token::Kind;

/// Letters with one meaning, and the zone or the distance from UTC that they stand for.
struct Letters {
    const char16_t* letters;
    const char* zone;
};
constexpr std::array knownLetters{
    Letters{u"utc", "UTC"},
    Letters{u"gmt", "UTC"},
    Letters{u"wet", "UTC"},
    Letters{u"west", "UTC+01:00"},
    Letters{u"cet", "UTC+01:00"},
    Letters{u"cest", "UTC+02:00"},
    Letters{u"eet", "UTC+02:00"},
    Letters{u"eest", "UTC+03:00"},
    Letters{u"msk", "UTC+03:00"},
    Letters{u"jst", "UTC+09:00"},
    Letters{u"kst", "UTC+09:00"},
    Letters{u"hkt", "UTC+08:00"},
    Letters{u"awst", "UTC+08:00"},
    Letters{u"aest", "UTC+10:00"},
    Letters{u"aedt", "UTC+11:00"},
    Letters{u"acst", "UTC+09:30"},
    Letters{u"nzst", "UTC+12:00"},
    Letters{u"nzdt", "UTC+13:00"},
    Letters{u"est", "UTC-05:00"},
    Letters{u"edt", "UTC-04:00"},
    Letters{u"cdt", "UTC-05:00"},
    Letters{u"mst", "UTC-07:00"},
    Letters{u"mdt", "UTC-06:00"},
    Letters{u"pst", "UTC-08:00"},
    Letters{u"pdt", "UTC-07:00"},
    Letters{u"akst", "UTC-09:00"},
    Letters{u"akdt", "UTC-08:00"},
    Letters{u"hst", "UTC-10:00"},
    Letters{u"et", "America/New_York"},
    Letters{u"pt", "America/Los_Angeles"},
};
/// The zones of the language files' regions, in their order.
constexpr std::array regions{"America/New_York", "America/Chicago", "America/Denver", "America/Los_Angeles"};
/// Cities whose name in the zone data is another one.
constexpr std::array otherNames{
    Letters{u"londres", "Europe/London"},       Letters{u"moscou", "Europe/Moscow"},
    Letters{u"bruxelles", "Europe/Brussels"},   Letters{u"geneve", "Europe/Zurich"},
    Letters{u"lisbonne", "Europe/Lisbon"},      Letters{u"athenes", "Europe/Athens"},
    Letters{u"varsovie", "Europe/Warsaw"},      Letters{u"vienne", "Europe/Vienna"},
    Letters{u"pekin", "Asia/Shanghai"},         Letters{u"singapour", "Asia/Singapore"},
    Letters{u"le caire", "Africa/Cairo"},       Letters{u"montreal", "America/Toronto"},
    Letters{u"boston", "America/New_York"},     Letters{u"san francisco", "America/Los_Angeles"},
    Letters{u"seattle", "America/Los_Angeles"}, Letters{u"beijing", "Asia/Shanghai"},
};
constexpr int mostWordsOfCity = 3;

const QHash<QString, QByteArray>& cities() {
    static const QHash<QString, QByteArray> result = [] {
        QHash<QString, QByteArray> known;
        for (const QByteArray& id : QTimeZone::availableTimeZoneIds()) {
            const qsizetype slash = id.lastIndexOf('/');
            if (slash > 0 && !id.startsWith("Etc/"))
                known.insert(folded(QString::fromLatin1(id.mid(slash + 1)).replace(u'_', u' ')), id);
        }
        for (const Letters& other : otherNames)
            known.insert(QString::fromUtf16(other.letters), other.zone);
        return known;
    }();
    return result;
}

std::optional<SpokenZone> zoneOf(const QByteArray& id, int end) {
    const auto zone = TimeZone::named(id);
    return zone ? std::optional(SpokenZone{*zone, end}) : std::nullopt;
}

/// The longest name of a city.
std::optional<SpokenZone> cityAt(const Tokens& tokens, int i) {
    QString name;
    std::optional<SpokenZone> result;
    for (int at = i; at < tokens.size() && at < i + mostWordsOfCity && tokens.isKind(at, Kind::word); ++at) {
        name += (at > i ? QStringLiteral(" ") : QString()) + tokens[at].text.toString();
        if (const auto found = cities().constFind(name); found != cities().constEnd())
            result = zoneOf(*found, at + 1);
    }
    return result;
}

/// "+2", "-05:00" behind UTC, or behind a time.
std::optional<SpokenZone> distanceAt(const Tokens& tokens, int i) {
    if (!(tokens.isSign(i, u'+') || tokens.isSign(i, u'-')) || !tokens.isGlued(i) || !tokens.isGlued(i + 1) ||
        !tokens.isKind(i + 1, Kind::number) || tokens[i + 1].digits > 2 || tokens[i + 1].number > 14)
        return std::nullopt;
    int minutes = 0;
    int end = i + 2;
    if (tokens.isSign(end, u':') && tokens.isGlued(end) && tokens.isGlued(end + 1) &&
        tokens.isKind(end + 1, Kind::number) && tokens[end + 1].digits == 2 && tokens[end + 1].number < 60) {
        minutes = tokens[end + 1].number;
        end += 2;
    }
    const auto padded = [](int value) { return QByteArray::number(value).rightJustified(2, '0'); };
    return zoneOf("UTC" + QByteArray(tokens.isSign(i, u'+') ? "+" : "-") + padded(tokens[i + 1].number) +
                      ":" + padded(minutes),
                  end);
}

}  // namespace

std::optional<SpokenZone> zoneAt(const Tokens& tokens, const Senses& senses, int i) {
    if (tokens.isSign(i, u'+') || tokens.isSign(i, u'-')) {
        // Only behind minutes: "15:00+02:00".
        const auto found = i >= 2 && tokens.isSign(i - 2, u':') ? distanceAt(tokens, i) : std::nullopt;
        return found && found->end == i + 4 ? found : std::nullopt;
    }
    if (!tokens.isKind(i, Kind::word))
        return std::nullopt;
    if (const Found* region = senses.find(i, Sense::region);
        region &&
        (!region->word.isShort || tokens.isStop(region->end) || senses.has(region->end, Sense::zoneTime)))
        return zoneOf(regions.at(static_cast<std::size_t>(region->word.value)),
                      senses.past(region->end, Sense::zoneTime));
    if (const Found* of = senses.find(i, Sense::timeOf))
        return cityAt(tokens, of->end);
    if (tokens.isGlued(i) && tokens[i].text == u"z" && tokens.isKind(i - 1, Kind::number))
        return zoneOf("UTC", i + 1);
    if (tokens[i].isAllCapitals) {
        for (const Letters& known : knownLetters) {
            if (tokens[i].text != known.letters)
                continue;
            const auto distance = qstrcmp(known.zone, "UTC") == 0 ? distanceAt(tokens, i + 1) : std::nullopt;
            return distance ? distance : zoneOf(known.zone, i + 1);
        }
    }
    if (!tokens[i].isCapital)
        return std::nullopt;
    auto city = cityAt(tokens, i);
    const int end = city ? senses.past(city->end, Sense::zoneTime) : 0;
    if (!city || end == city->end)
        return std::nullopt;
    city->end = end;
    return city;
}

}  // namespace kestrant::speech
