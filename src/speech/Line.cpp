#include "speech/Line.h"

#include "speech/Marks.h"
#include "speech/Phrases.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace kestrant::speech {
namespace {

using PieceKind = Piece::Kind;

/// How much a phrase says: of several, the one that says most counts.
int weight(const Phrase& phrase) {
    return (phrase.meaning.rule ? 4 : 0) + (phrase.meaning.hasDay() ? 2 : 0) +
           (phrase.meaning.hasTime() ? 1 : 0);
}

class LineReader {
  public:
    LineReader(const QString& line, const Context& context, const std::vector<TextRange>& refused,
               const std::vector<TextRange>& accepted)
        : line_(line)
        , context_(context)
        , tokens_(line)
        , senses_(tokens_, context.present.language)
        , grammar_(tokens_, senses_, context_.present)
        , taken_(marked(refused))
        , accepted_(marked(accepted)) {}

    Line read() {
        readMarks(line_, tokens_, senses_, context_, taken_, result_);
        const std::vector<bool> before = taken_;
        const auto alert = findAlert(grammar_, taken_);
        if (alert)
            take(alert->begin, alert->end);
        readPhrases();
        if (alert && !(result_.day && isBeside(*alert))) {
            taken_ = before;
            result_.offers.clear();
            std::erase_if(result_.pieces, [](const Piece& piece) {
                return piece.kind == PieceKind::day || piece.kind == PieceKind::time ||
                       piece.kind == PieceKind::repeat || piece.kind == PieceKind::zone;
            });
            forgetMoment();
            readPhrases();
        } else if (alert) {
            add(PieceKind::alert, alert->begin, alert->end);
            result_.alert = alert->alert;
        }
        readAllDay();
        if (context_.purpose == Purpose::event)
            readEvent();
        finish();
        return std::move(result_);
    }

  private:
    [[nodiscard]] std::vector<bool> marked(const std::vector<TextRange>& ranges) const {
        std::vector<bool> result(static_cast<std::size_t>(tokens_.size()) + 1, false);
        for (const TextRange& range : ranges) {
            for (int i = 0; i < tokens_.size(); ++i) {
                if (tokens_[i].start < range.end() && range.start < tokens_[i].end)
                    result[static_cast<std::size_t>(i)] = true;
            }
        }
        return result;
    }
    [[nodiscard]] TextRange rangeOf(int begin, int end) const {
        const qsizetype start = tokens_[begin].start;
        return {start, tokens_[end - 1].end - start};
    }
    void take(int begin, int end) { std::fill(taken_.begin() + begin, taken_.begin() + end, true); }
    void add(PieceKind kind, int begin, int end) {
        result_.pieces.push_back({kind, rangeOf(begin, end)});
        take(begin, end);
    }
    void forgetMoment() {
        result_.day.reset();
        result_.time.reset();
        result_.endDay.reset();
        result_.endTime.reset();
        result_.timeInZone.reset();
        result_.zone.clear();
        result_.rule.clear();
    }
    /// Words such as "30 min before" are about the moment only where they touch it, or say what they are.
    [[nodiscard]] bool isBeside(const SpokenAlert& alert) const {
        if (alert.isNamed || alert.begin == 0)
            return true;
        const int before = alert.begin - 1;
        return taken_[static_cast<std::size_t>(before)] || tokens_.isStop(before) ||
               (alert.end < tokens_.size() && taken_[static_cast<std::size_t>(alert.end)]);
    }

    void readPhrases() {
        const std::vector<Phrase> phrases = findPhrases(grammar_, taken_, accepted_);
        const Phrase* best = nullptr;
        std::optional<Moment> start;
        for (const Phrase& phrase : phrases) {
            const auto moment = phrase.isTaken || phrase.isOffered
                                    ? resolved(phrase.meaning, context_.present)
                                    : std::nullopt;
            if (!moment)
                continue;
            if (phrase.isOffered) {
                const QString rule = phrase.meaning.rule ? ruleText(phrase.meaning, *moment) : QString();
                result_.offers.push_back(
                    {rangeOf(phrase.begin, phrase.end), moment->day, moment->time, rule});
            } else if (!best || weight(phrase) >= weight(*best)) {
                best = &phrase;
                start = moment;
            }
        }
        if (!best)
            return;
        Meaning meaning = best->meaning;
        std::optional<Meaning> until = best->until;
        addParts(*best);
        // A day and a time may stand apart.
        for (const Phrase& phrase : phrases) {
            const bool isOther = phrase.isTaken && &phrase != best;
            if (!isOther || (phrase.until && until))
                continue;
            const bool completes =
                (meaning.hasDay() || meaning.rule) != (phrase.meaning.hasDay() || phrase.meaning.rule) ||
                (!phrase.meaning.hasDay() && !phrase.meaning.rule && phrase.meaning.hasTime());
            const auto both =
                completes ? Meaning::joined(meaning, phrase.meaning, context_.present) : std::nullopt;
            const auto moment = both ? resolved(*both, context_.present) : std::nullopt;
            if (!moment)
                continue;
            meaning = *both;
            start = moment;
            if (phrase.until)
                until = phrase.until;
            addParts(phrase);
        }
        if (meaning.rule && meaning.rule->isList)
            offerRepetition(*best, meaning);
        setMoment(meaning, until, *start);
    }

    /// "mon and thu" are the next ones; that they go on every week is offered.
    void offerRepetition(const Phrase& phrase, Meaning& meaning) {
        Meaning endless = meaning;
        endless.rule->count = 0;
        const auto first = resolved(endless, context_.present);
        const auto isAccepted =
            std::find(accepted_.begin() + phrase.begin, accepted_.begin() + phrase.end, true);
        if (isAccepted != accepted_.begin() + phrase.end)
            meaning = endless;
        else if (first)
            result_.offers.push_back(
                {rangeOf(phrase.begin, phrase.end), first->day, first->time, ruleText(endless, *first)});
    }

    void addParts(const Phrase& phrase) {
        int begin = phrase.begin;
        for (qsizetype k = 0; k < phrase.parts.size(); ++k) {
            const PhrasePart& part = phrase.parts[k];
            const bool goesOn = k + 1 < phrase.parts.size() && phrase.parts[k + 1].kind == part.kind;
            if (goesOn || part.end <= begin)
                continue;
            constexpr std::array kinds{PieceKind::day, PieceKind::time, PieceKind::repeat, PieceKind::zone};
            add(kinds.at(static_cast<std::size_t>(part.kind)), begin, part.end);
            if (part.kind == PhrasePart::Kind::zone) {
                const TextRange words = result_.pieces.back().range;
                result_.zone = line_.mid(words.start, words.length).remove(u'(').remove(u')').trimmed();
            }
            begin = part.end;
        }
    }

    void setMoment(const Meaning& meaning, const std::optional<Meaning>& until, Moment start) {
        std::optional<Moment> end;
        if (meaning.zone)
            end = readZone(meaning, until, start);
        else if (until)
            end = resolvedEnd(*until, meaning, start, context_.present);
        // The time of a span may have moved with its end, and so may the day that is next.
        if (end && !meaning.hasDay() && !meaning.rule && start.time) {
            const bool isOver = *start.time <= context_.present.zone.timeOf(context_.present.now);
            const int shift =
                static_cast<int>(start.day.daysTo(context_.present.today().addDays(isOver ? 1 : 0)));
            start.day = start.day.addDays(shift);
            end->day = end->day.addDays(shift);
        }
        if (context_.purpose == Purpose::reminder && end && meaning.isDeadline) {
            start = *end;
            end.reset();
        }
        result_.day = start.day;
        result_.time = start.time;
        if (end) {
            result_.endDay = end->day;
            if (start.time)
                result_.endTime = end->time;
        }
        if (meaning.rule)
            result_.rule = ruleText(meaning, start);
    }

    /// Both ends of a span are times of the same zone.
    std::optional<Moment> readZone(const Meaning& meaning, const std::optional<Meaning>& until,
                                   const Moment& start) {
        const TimeZone& own = context_.present.zone;
        const Instant instant = own.instantAt(start.day, *start.time);
        result_.timeInZone = meaning.zone->timeOf(instant);
        Moment typed{meaning.zone->dayOf(instant), result_.timeInZone};
        const auto end = until ? resolvedEnd(*until, meaning, typed, context_.present) : std::nullopt;
        if (!end || !end->time)
            return std::nullopt;
        const Instant last = meaning.zone->instantAt(end->day, *end->time);
        return Moment{own.dayOf(last), own.timeOf(last)};
    }

    [[nodiscard]] QString ruleText(const Meaning& meaning, const Moment& first) const {
        Rule rule = completedRule(meaning);
        if (!rule.lasts.isNothing())
            rule.until = rule.lasts.addedTo(first.day).addDays(-1);
        QString text = rule.text();
        // The end of a rule of times is a moment in UTC (RFC 5545, 3.3.10).
        if (rule.until.isValid() && first.time && rule.count == 0) {
            const Instant last = context_.present.zone.instantAt(rule.until, QTime(23, 59, 59));
            QString utc = toIso8601(last);
            utc.remove(u'-').remove(u':');
            text.replace(rule.until.toString(QStringLiteral("yyyyMMdd")), utc);
        }
        return text;
    }

    /// "all day" beside a day.
    void readAllDay() {
        for (int i = 0; i < tokens_.size() && result_.day && !result_.time; ++i) {
            const Found* words = senses_.find(i, Sense::allDay);
            if (words && !taken_[static_cast<std::size_t>(i)] && tokens_.begins(i))
                add(PieceKind::day, i, words->end);
        }
    }

    /// The length of an event and its place.
    void readEvent() {
        if (result_.time && !result_.endTime) {
            for (int i = 0; i < tokens_.size(); ++i) {
                const Found* lead = senses_.find(i, Sense::duration);
                const auto length =
                    lead && !taken_[static_cast<std::size_t>(i)] ? grammar_.length(lead->end) : std::nullopt;
                if (!length || length->length.months != 0 || !tokens_.ends(length->end))
                    continue;
                const Instant start = context_.present.zone.instantAt(*result_.day, *result_.time);
                const Instant end =
                    start + std::chrono::minutes(length->length.minutes + length->length.days * 1440LL);
                result_.endDay = context_.present.zone.dayOf(end);
                result_.endTime = context_.present.zone.timeOf(end);
                add(PieceKind::time, i, length->end);
                break;
            }
        }
        int phraseEnd = 0;
        for (const Piece& piece : result_.pieces) {
            if (piece.kind != PieceKind::day && piece.kind != PieceKind::time &&
                piece.kind != PieceKind::repeat && piece.kind != PieceKind::zone)
                continue;
            for (int i = phraseEnd; i < tokens_.size() && tokens_[i].start < piece.range.end(); ++i)
                phraseEnd = i + 1;
        }
        if (const auto place = findPlace(tokens_, senses_, taken_, phraseEnd)) {
            const qsizetype start = tokens_[place->name].start;
            result_.place = line_.mid(start, tokens_[place->end - 1].end - start);
            add(PieceKind::place, place->begin, place->end);
        }
    }

    void finish() {
        auto& pieces = result_.pieces;
        const auto write = [&] {
            std::sort(pieces.begin(), pieces.end(),
                      [](const Piece& a, const Piece& b) { return a.range.start < b.range.start; });
            std::vector<TextRange> ranges;
            ranges.reserve(pieces.size());
            for (const Piece& piece : pieces)
                ranges.push_back(piece.range);
            result_.title = withoutRanges(line_, ranges);
        };
        write();
        // A link alone is a title.
        if (result_.title.isEmpty() && !result_.link.isEmpty()) {
            std::erase_if(pieces, [](const Piece& piece) { return piece.kind == PieceKind::link; });
            write();
        }
    }

    const QString& line_;
    const Context& context_;
    Tokens tokens_;
    Senses senses_;
    Grammar grammar_;
    /// Refused, or understood already.
    std::vector<bool> taken_;
    std::vector<bool> accepted_;
    Line result_;
};

}  // namespace

Line readLine(const QString& line, const Context& context, const std::vector<TextRange>& refused,
              const std::vector<TextRange>& accepted) {
    return LineReader(line, context, refused, accepted).read();
}

}  // namespace kestrant::speech
