#include "speech/Chains.h"

#include "speech/Dates.h"

#include <algorithm>

namespace kestrant::speech {
namespace {

using Gap = Token::Gap;
using Kind = Token::Kind;
using Need = Atom::Need;

/// The most words of one kind in a row.
constexpr int mostAtoms = 7;

std::size_t index(int i) {
    return static_cast<std::size_t>(i);
}

bool isMarked(const std::vector<bool>& marks, int begin, int end) {
    return std::any_of(marks.begin() + begin, marks.begin() + end, [](bool mark) { return mark; });
}

}  // namespace

ChainReader::ChainReader(const Grammar& grammar, const std::vector<bool>& refused)
    : grammar_(grammar)
    , tokens_(grammar.tokens())
    , senses_(grammar.senses())
    , refused_(refused)
    , atoms_(static_cast<std::size_t>(tokens_.size()) + 1)
    , isName_(static_cast<std::size_t>(tokens_.size()) + 1, false) {
    for (int i = 0; i < tokens_.size(); ++i) {
        if (const Found* name = senses_.find(i, Sense::name))
            std::fill(isName_.begin() + i, isName_.begin() + name->end, true);
    }
}

bool ChainReader::mayBegin(int i) const {
    return !refused_[index(i)] && !isName_[index(i)] &&
           (senses_.begin(i) != senses_.end(i) || tokens_.isKind(i, Kind::number) ||
            tokens_.isKind(i, Kind::sign));
}

const std::vector<Atom>& ChainReader::atomsAt(int i) {
    auto& known = atoms_[index(i)];
    if (!known)
        known = grammar_.atoms(i);
    return *known;
}

std::optional<Chain> ChainReader::longest(int i) {
    best_.reset();
    tries_ = 0;
    Chain chain{.begin = i, .end = i};
    if (const Found* from = senses_.find(i, Sense::from)) {
        Chain led = chain;
        led.hasFrom = true;
        led.isGenitive = isGenitive(i, from->end);
        led.hasLead = led.isLed = true;
        grow(led, from->end, true);
    }
    grow(chain, i, true);
    return best_;
}

void ChainReader::consider(const Chain& chain) {
    if (!tokens_.ends(chain.end))
        return;
    // "from" leads to a span, or to a time of day.
    // "le train de 8h12 demain" has a time; "le film de minuit" has none.
    const bool isTimeOfDay = chain.isGenitive && chain.meaning.hasDay() && chain.meaning.minute >= 0;
    const bool isList = chain.meaning.rule && chain.meaning.rule->isList;
    const bool needsSpan =
        !isList && (chain.isGenitive || chain.meaning.hasDay() || chain.meaning.rule || chain.isBareTime);
    if (chain.hasFrom && !chain.until && needsSpan && !isTimeOfDay)
        return;
    if (chain.isLoose || (chain.meaning.rule && chain.meaning.isPast))
        return;
    // "9 tomorrow morning", but not "buy 9 tomorrow"
    if (chain.isBareTime && !chain.hasLead && !chain.until &&
        (chain.meaning.part == DayPart::none || tokens_.isKind(chain.begin, Kind::word)))
        return;
    const auto weight = [](const Chain& each) {
        return each.end * 4 + (each.isClear || each.hasRoomWord || each.hasOpening ? 2 : 0) +
               (each.hasRulePart ? 1 : 0);
    };
    if (!best_ || weight(chain) > weight(*best_))
        best_ = chain;
}

/// "of", "de": what they lead to belongs to the word before.
bool ChainReader::isGenitive(int i, int end) const {
    return std::any_of(senses_.begin(i), senses_.end(i), [&](const Found& found) {
        return found.word.sense == Sense::genitive && found.end == end;
    });
}

std::vector<ChainReader::Passage> ChainReader::passages(int at, bool isFirst) const {
    std::vector<Passage> result{{at, 0, false}};
    const auto addLeads = [&](int from, int extra) {
        for (const Found* found = senses_.begin(from); found != senses_.end(from); ++found) {
            const bool isWithinWord = found->end < tokens_.size() && tokens_[found->end].gap == Gap::hyphen;
            if (isWithinWord || (found->word.sense == Sense::lead && isFirst && isGenitive(from, found->end)))
                continue;
            if (found->word.sense == Sense::lead)
                result.push_back({found->end, found->word.value | extra, true});
            else if (found->word.sense == Sense::hedge && !isFirst)
                result.push_back({found->end, 0, false});
        }
    };
    addLeads(at, 0);
    if (tokens_.isSign(at, u'~'))
        result.push_back({at + 1, leadsToTime | leadsToDay, true});
    const std::size_t direct = result.size();
    for (std::size_t k = 1; k < direct; ++k) {
        // "on or about": a hedge behind a lead; "by the", "for the" hold their article already.
        const Passage passage = result[k];
        for (const Found* found = senses_.begin(passage.at); found != senses_.end(passage.at); ++found) {
            constexpr int kinds = leadsToDay | leadsToTime | leadsToSpan | leadsToPart;
            if (found->word.sense == Sense::hedge && passage.isLead)
                result.push_back({found->end, passage.leads, true});
            else if (found->word.sense == Sense::lead && (found->word.value & passage.leads & kinds) != 0)
                result.push_back(
                    {found->end, found->word.value | (passage.leads & (isDeadline | isClear)), true});
        }
    }
    for (std::size_t k = 1; k < direct; ++k) {
        // "due: friday"
        if (tokens_.isSign(result[k].at, u':') && result[k].isLead)
            result.push_back({result[k].at + 1, result[k].leads, true});
    }
    if (!isFirst) {
        if (const Found* from = senses_.find(at, Sense::from))
            result.push_back({from->end, 0, false, true});
        const bool isComma = tokens_.isSign(at, u',') || tokens_.isSign(at, u'(');
        const bool isDash =
            (tokens_.isSign(at, u'-') || tokens_.isSign(at, u'–') || tokens_.isSign(at, u'—')) &&
            !tokens_.isGlued(at) && !tokens_.isGlued(at + 1);
        if (isComma || isDash) {
            result.push_back({at + 1, 0, false});
            addLeads(at + 1, 0);
        }
    }
    return result;
}

void ChainReader::grow(const Chain& chain, int at, bool isFirst) {
    if (chain.atoms >= mostAtoms)
        return;
    for (const Passage& passage : passages(at, isFirst)) {
        if (passage.at >= tokens_.size() || refused_[index(passage.at)] || isName_[index(passage.at)])
            continue;
        const Token& token = tokens_[passage.at];
        if (token.gap == Gap::none && !isFirst && passage.at == at && !tokens_.isKind(at, Kind::sign) &&
            token.kind != Kind::word)
            continue;
        for (const Atom& atom : atomsAt(passage.at)) {
            if (!mayTry())
                return;
            auto next = joined(chain, atom, passage);
            if (!next)
                continue;
            // "3pm (UTC)"
            if (!isFirst && tokens_.isSign(passage.at - 1, u'(') && tokens_.isSign(next->end, u')')) {
                ++next->end;
                next->parts.back().end = next->end;
            }
            advance(*next);
        }
    }
}

void ChainReader::advance(const Chain& chain) {
    if (isMarked(refused_, chain.begin, chain.end))
        return;
    consider(chain);
    // "9h pile", "friday at the latest"
    if (const Found* hedge = senses_.find(chain.end, Sense::hedge); hedge && hedge->word.value == 1) {
        Chain hedged = chain;
        hedged.end = hedge->end;
        hedged.parts.back().end = hedge->end;
        consider(hedged);
    }
    tryUntil(chain);
    grow(chain, chain.end, false);
}

std::optional<Chain> ChainReader::joined(const Chain& chain, const Atom& atom, const Passage& passage) const {
    const bool isFirst = chain.atoms == 0;
    if (passage.isLead && (atom.leads & passage.leads) == 0)
        return std::nullopt;
    if ((atom.isOfRule && !chain.meaning.rule) || (atom.isOfTime && !chain.endsWithTime))
        return std::nullopt;
    if (atom.isOfLead && !isFirst && !passage.isLead)
        return std::nullopt;
    // "soirée samedi" is an evening that has a name.
    if (isFirst && !passage.isLead && atom.meaning.part != DayPart::none &&
        atom.meaning.edge == PartEdge::none && !atom.meaning.hasDay() && !atom.meaning.rule)
        return std::nullopt;
    if (passage.isFrom && (!atom.until || !atom.meaning.hasTime()))
        return std::nullopt;
    Chain next = chain;
    next.end = atom.end;
    ++next.atoms;
    using Part = PhrasePart::Kind;
    next.parts.push_back({atom.meaning.rule       ? Part::repeat
                          : atom.meaning.hasDay() ? Part::day
                          : atom.meaning.zone     ? Part::zone
                                                  : Part::time,
                          atom.end});
    if (atom.isOfRule) {
        // Times of a day are at the same minute of their hours.
        const bool areTimes = atom.meaning.rule->hours != 0;
        if ((areTimes &&
             (next.meaning.minute < 0 || (next.meaning.minute - atom.meaning.minute) % 60 != 0)) ||
            !next.meaning.rule->extendWith(*atom.meaning.rule))
            return std::nullopt;
        next.isClear = next.hasRulePart = true;
        if (atom.meaning.start.isValid())
            next.meaning.start = atom.meaning.start;
        return next;
    }
    if (atom.until && (chain.until || isFirst == false) &&
        (chain.until || (chain.meaning.hasTime() && atom.meaning.hasTime())))
        return std::nullopt;
    // "second tuesday" is no day.
    if (chain.atoms == 1 && chain.isBareDay && atom.meaning.weekday != 0 &&
        (!chain.hasRoomWord || passage.at == chain.end))
        return std::nullopt;
    // A bare number is the hour of nothing but a day, and the day of nothing but a week, month or
    // weekday.
    if (atom.isBare && !isFirst && !passage.isLead && !passage.isFrom && !mayTakeNumber(chain, atom))
        return std::nullopt;
    if (atom.isBare && atom.meaning.monthDay != 0 && passage.isLead && (passage.leads & hasArticle) == 0)
        return std::nullopt;
    if (atom.beginsBare && !isFirst && !passage.isLead && chain.meaning.weekday != 0 &&
        hasMatchSoon(chain.meaning.weekday, atom.meaning.minute / 60))
        return std::nullopt;
    const auto meaning = isFirst ? std::optional(atom.meaning)
                                 : Meaning::joined(chain.meaning, atom.meaning, grammar_.present());
    if (!meaning)
        return std::nullopt;
    next.meaning = *meaning;
    if ((passage.leads & isDeadline) != 0)
        next.meaning.isDeadline = true;
    if (atom.until)
        next.until = atom.until;
    next.isLoose |= isFirst && atom.isBare && atom.need == Need::help && atom.meaning.monthDay != 0 &&
                    tokens_.isKind(atom.end - 1, Kind::number) && (passage.leads & hasArticle) == 0;
    const bool isHelped = passage.isLead && (atom.helpedBy & passage.leads) != 0;
    switch (atom.need) {
    case Need::nothing:
        next.isClear = true;
        break;
    case Need::room:
        // A day and a time make each other clear.
        next.isClear |= chain.hasRoomWord && chain.meaning.hasDay() != atom.meaning.hasDay();
        next.hasRoomWord = true;
        break;
    case Need::opening:
        next.hasOpening = true;
        break;
    case Need::help:
        next.hasRoomWord |= isHelped || (atom.until && (chain.hasFrom || passage.isFrom));
        break;
    }
    if (passage.isLead) {
        next.hasLead |= isFirst;
        // "the Christmas lights" have an article, too.
        next.isLed |= (passage.leads & isClear) != 0 ||
                      ((passage.leads & hasArticle) != 0 && (atom.need != Need::help || atom.isBare)) ||
                      (atom.need == Need::opening && isHelped);
        // "le lundi" is every Monday.
        if (isFirst && (passage.leads & hasArticle) != 0 && (passage.leads & isClear) == 0 &&
            atom.meaning.weekday != 0 && atom.meaning.monthDay == 0)
            next.hasRoomWord = next.isClear = false;
    }
    next.isAmbiguous |= atom.isAmbiguous && isFirst && atom.need == Need::room && !passage.isLead &&
                        tokens_.isKind(chain.begin, Kind::word);
    // Two half meanings make none: "sam 18"; a half one beside a day or a time is whole.
    if (!isFirst && atom.need == Need::help && chain.atoms > 0 && !chain.isClear && !chain.hasRoomWord &&
        !chain.hasOpening && atom.meaning.hasTime() && !atom.isBare && chain.meaning.hasDay())
        next.hasRoomWord = true;
    if (!isFirst && atom.need == Need::help && !chain.isClear && !chain.hasRoomWord && chain.meaning.rule &&
        atom.meaning.hasTime())
        next.hasRoomWord = true;
    // "le jeudi 17"
    if (!isFirst && atom.isBare && atom.meaning.monthDay != 0 && chain.meaning.weekday != 0 && chain.hasLead)
        next.hasRoomWord = true;
    // "sat 11"
    if (atom.isBare && chain.atoms == 1 && chain.meaning.weekday != 0 && tokens_.isStop(atom.end) &&
        chain.begin > 0 && (atom.meaning.monthDay != 0 || isEnglish(chain.begin, Sense::weekday)))
        next.hasRoomWord = true;
    next.isBareTime |= atom.isBare && isFirst && atom.meaning.minute >= 0;
    next.isBareDay |= atom.isBare && isFirst && atom.meaning.monthDay != 0;
    next.endsWithTime = atom.meaning.minute >= 0;
    next.endsWithNumber = tokens_.isKind(atom.end - 1, Kind::number);
    return next;
}

bool ChainReader::isEnglish(int i, Sense sense) const {
    const Found* found = senses_.find(i, sense);
    return found && found->word.language == Language::english;
}

bool ChainReader::mayTakeNumber(const Chain& chain, const Atom& atom) const {
    if (atom.meaning.minute >= 0) {
        // "tomorrow 9", but not "may 5 15"
        const bool isAlone = tokens_.isStop(atom.end) || senses_.has(atom.end, Sense::part) ||
                             senses_.has(atom.end, Sense::connector) || senses_.has(atom.end, Sense::lead);
        const bool isCompact =
            tokens_.isKind(atom.end - 1, Kind::number) && tokens_[atom.end - 1].digits == 4;
        return isAlone &&
               (chain.meaning.date.isValid() || chain.meaning.weekday != 0 ||
                chain.meaning.part != DayPart::none) &&
               chain.meaning.monthDay == 0 &&
               (tokens_.isKind(atom.end - 1, Kind::number) || isCompact || atom.until);
    }
    return chain.meaning.weekday != 0 && chain.meaning.monthDay == 0 && tokens_.ends(atom.end) &&
           hasMatchSoon(chain.meaning.weekday, atom.meaning.monthDay);
}
/// Whether "friday 13" is a day of the coming half year; "friday 8" is an hour otherwise.
bool ChainReader::hasMatchSoon(int weekday, int monthDay) const {
    const QDate today = grammar_.present().today();
    const QDate found = nextDate(today, 0, monthDay, weekday);
    return found.isValid() && (found <= today.addDays(grammar_.present().hasTwelveHours ? 7 : 31) ||
                               (monthDay > 12 && found <= today.addDays(190)));
}

}  // namespace kestrant::speech
