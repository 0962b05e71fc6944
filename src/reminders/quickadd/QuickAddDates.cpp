#include "reminders/quickadd/QuickAddDates.h"

#include "reminders/quickadd/QuickAddReading.h"

namespace kestrant::quickadd {

std::vector<Phrase> findPhrases(const std::vector<Token>& tokens, const Present& present) {
    const Reading reading(tokens);
    std::vector<Phrase> result;
    std::optional<std::size_t> dayEnd;
    std::optional<std::size_t> phraseEnd;
    for (std::size_t i = 0; i < tokens.size();) {
        auto best = findDay(reading, i, phraseEnd == i, present);
        const auto time = findTime(reading, i, dayEnd == i, present);
        if (time && (!best || time->end > best->end))
            best = time;
        if (!best) {
            ++i;
            continue;
        }
        best->begin = i;
        if (best->day)
            dayEnd = best->end;
        i = best->end;
        phraseEnd = i;
        result.push_back(*best);
    }
    return result;
}

}  // namespace kestrant::quickadd
