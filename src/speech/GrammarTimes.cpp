#include "speech/Grammar.h"
#include "speech/Zones.h"

#include <utility>

namespace kestrant::speech {

using Kind = Token::Kind;
using Need = Atom::Need;

void Grammar::addTimes(int i, Atoms& result) const {
    if (const auto found = clock(i))
        result.push_back(*found);
    if (const Found* end = senses_.find(i, Sense::dayEnd))
        result.push_back({.end = end->end,
                          .meaning = {.minute = end->word.value},
                          .need = Need::room,
                          .leads = leadsToTime | leadsToDay | leadsToSpan});
    if (const Found* part = senses_.find(i, Sense::part)) {
        result.push_back({.end = part->end,
                          .meaning = {.part = static_cast<DayPart>(part->word.value + 1)},
                          .need = Need::help,
                          .leads = leadsToPart,
                          .helpedBy = leadsToPart});
    }
    addPartEdges(i, result);
    // "the morning of the 3rd", "le soir du 12 mai"
    if (const Found* part = senses_.find(i, Sense::part)) {
        for (const Found* of = senses_.begin(part->end); of != senses_.end(part->end); ++of) {
            const auto day = of->word.sense == Sense::of ? dayAt(of->end) : std::nullopt;
            const auto bare = of->word.sense == Sense::of && !day ? dayOfMonth(of->end) : std::nullopt;
            Meaning meaning = day ? day->meaning : Meaning{.monthDay = small(bare ? bare->value : 0)};
            meaning.part = static_cast<DayPart>(part->word.value + 1);
            if (day || bare)
                result.push_back({.end = day ? day->end : bare->end,
                                  .meaning = meaning,
                                  .need = Need::room,
                                  .leads = leadsToDay | leadsToPart});
        }
    }
    // "15 min before 6pm", "une heure avant midi"
    if (const auto spoken = length(i);
        spoken && spoken->length.minutes > 0 && spoken->length.days == 0 && spoken->length.months == 0) {
        const bool isBefore = senses_.has(spoken->end, Sense::before);
        const int at = senses_.past(spoken->end, isBefore ? Sense::before : Sense::after);
        if (auto moved = at != spoken->end ? clock(at) : std::nullopt; moved && !moved->isBare) {
            const int minutes = static_cast<int>(spoken->length.minutes % 1440);
            const int minute = minuteOfDay(moved->meaning) + (isBefore ? -minutes : minutes);
            result.push_back({.end = moved->end,
                              .meaning = {.minute = (minute + 1440) % 1440},
                              .need = Need::room,
                              .leads = leadsToTime});
        }
    }
    if (tokens_.isSign(i, u'@') && tokens_.begins(i)) {
        if (auto found = clock(i + 1); found && (!found->isBare || tokens_.isStop(found->end))) {
            found->need = Need::nothing;
            found->isBare = false;
            result.push_back(*found);
        }
    }
}

/// "late afternoon", "en fin de matinée"; "early" and "late" beside a day.
void Grammar::addPartEdges(int i, Atoms& result) const {
    for (const auto& [sense, edge] :
         {std::pair(Sense::begin, PartEdge::early), std::pair(Sense::middle, PartEdge::middle),
          std::pair(Sense::end, PartEdge::late)}) {
        for (const Found* found = senses_.begin(i); found != senses_.end(i); ++found) {
            if (found->word.sense != sense)
                continue;
            if (const Found* part = senses_.find(found->end, Sense::part))
                result.push_back(
                    {.end = part->end,
                     .meaning = {.part = static_cast<DayPart>(part->word.value + 1), .edge = edge},
                     .need = Need::room,
                     .leads = leadsToPart | leadsToTime,
                     .helpedBy = leadsToPart});
            if (found->word.value == 1)
                result.push_back(
                    {.end = found->end, .meaning = {.edge = edge}, .need = Need::help, .leads = 0});
        }
    }
}

/// "2-4pm", "from 9 to 11", "14h-16h", "entre 9 et 11h".
void Grammar::addTimeRanges(int i, Atoms& result) const {
    // "10 to 12" is also ten minutes to twelve.
    auto start = clockInDigits(i);
    if (!start || joint(start->end, false) == start->end)
        start = clock(i);
    if (!start)
        return;
    const bool isSaid = senses_.endsWith(i, Sense::from);
    const int at = joint(start->end, senses_.endsWith(i, Sense::between));
    const bool isBetween = isSaid && senses_.has(start->end, Sense::and_);
    const int from = isBetween ? senses_.past(start->end, Sense::and_) : at;
    if (from == start->end)
        return;
    auto end = clock(from);
    if (!end)
        return;
    // "9h au 14 rue Haute"
    const bool hasRoom = tokens_.isStop(end->end) || senses_.begin(end->end) != senses_.end(end->end);
    if (end->isBare && !start->isBare && !hasRoom)
        return;
    // Two plain numbers are hours only behind "from" or beside a day.
    const bool arePlain = start->isBare && end->isBare;
    Atom atom{.end = end->end,
              .meaning = start->meaning,
              .until = end->meaning,
              .need = Need::nothing,
              .leads = leadsToTime};
    atom.beginsBare = start->isBare && tokens_.isKind(i, Kind::number) && !isSaid;
    // "salle 5 à 15h" is one time only.
    const Found* word = senses_.find(start->end, Sense::range);
    // "le four à dix heures"
    if (word && start->isBare && tokens_.isKind(i, Kind::word) && senses_.has(i, Sense::number) &&
        senses_.find(i, Sense::number)->word.language != word->word.language)
        return;
    if (atom.beginsBare && word && word->word.language == Language::french && at == word->end)
        return;
    if (atom.beginsBare && !start->meaning.isOfTwelve && end->meaning.minute <= start->meaning.minute)
        return;
    atom.isBare = arePlain;
    if (arePlain && isSaid)
        atom.need = Need::room;
    if (arePlain && !isSaid) {
        const bool isGlued = tokens_.isGlued(start->end) && tokens_.isGlued(from);
        if (!isGlued && !(word && word->word.language == Language::english))
            return;
        atom.need = Need::help;
    }
    // Of "14 à 16h" the first hour is on the same clock as the second.
    if (start->isBare && !end->isBare && !present_.hasTwelveHours && end->meaning.isOfTwelve)
        atom.meaning.isVague = false;
    result.push_back(atom);
}

/// "JST", "UTC+2", "London time", "(UTC)" behind a time.
void Grammar::addZone(int i, Atoms& result) const {
    const auto found = zoneAt(tokens_, senses_, i);
    if (!found)
        return;
    Atom atom{.end = found->end, .need = Need::help, .leads = 0, .isOfTime = true};
    atom.meaning.zone = found->zone;
    result.push_back(atom);
}

}  // namespace kestrant::speech
