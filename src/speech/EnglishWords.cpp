#include "speech/Vocabulary.h"

namespace kestrant::speech {

const std::string_view englishWords = R"(
number 0: zero, one, two, three, four, five, six, seven, eight, nine, ten, eleven, twelve, thirteen, fourteen, fifteen, sixteen, seventeen, eighteen, nineteen, twenty
number 30: thirty
number 40: forty
number 50: fifty
number 60: sixty
number 70: seventy
number 80: eighty
number 90: ninety
number 2: a couple of|a couple|couple of
number 3: a few|few
article 1: a|an
ordinal 1: first, second, third, fourth, fifth, sixth, seventh, eighth, ninth, tenth, eleventh, twelfth, thirteenth, fourteenth, fifteenth, sixteenth, seventeenth, eighteenth, nineteenth, twentieth, twenty first, twenty second, twenty third, twenty fourth, twenty fifth, twenty sixth, twenty seventh, twenty eighth, twenty ninth, thirtieth, thirty first
ordinalEnding 0: st|nd|rd|th
fraction 1: quarter|a quarter, half|a half|one half, three quarters
fractionMark 1: and a quarter, and a half, and three quarters
weekday 1: monday, tuesday, wednesday, thursday, friday, saturday, sunday
weekday~ 1: mon, tue|tues, wed|weds, thu|thur|thurs, fri, sat, sun
weekdays 1: mondays, tuesdays, wednesdays, thursdays, fridays, saturdays, sundays
month 1: january, february, _, april, _, june, july, august, september, october, november, december
month 2: feb, _, apr, _, jun, jul, aug, _, oct, nov, dec
month 1: jan, _, _, _, _, _, _, _, sep|sept
month~ 3: march|mar, _, may
genitive 0: of|of the
author 0: by
otherWord 0: sat|sun|wed
otherWord 1: mon
company 0: with|about
priorityName 0: priority|prio
negation 0: not|never|isn t|don t
work 0: watch|rewatch|read|reread|listen to|play|see|stream
zeroMinute 0: oh|o
per 0: a|an|per
on 0: on
region 0: eastern time|us eastern|eastern standard time|eastern daylight time, central time|us central, mountain time|us mountain, pacific time|us pacific|pacific standard time|pacific daylight time
region~ 0: eastern, central, mountain, pacific
zoneTime 0: time|local time
allDay 0: all day|all day long|the whole day|whole day
unit 0: minute|minutes|min|mins, hour|hours|hr|hrs, day|days, week|weeks|wk|wks, fortnight|fortnights, month|months|mth|mths, year|years|yr|yrs, weekend|weekends|week end|week ends, quarter|quarters, workday|workdays|working day|working days|business day|business days
unit~ 0: m, h, d, w, _, mo|mos, y
part 0: morning|mornings, afternoon|afternoons, evening|evenings, night|nights
part 0: am, pm
clock 720: noon|midday|noontime|noonish|lunchtime|lunch time
clock 540: first thing|first thing in the morning
clock 1440: midnight
dayEnd 1080: eod|cob|end of day|the end of the day|end of the day|close of business|end of business|the end of business|eob
meridiem 0: am, pm
meridiem~ 0: a, p
oclock 0: o clock|oclock
ish 0: ish
past 0: past|after
to 0: to|before|till|of
today 0: today|tdy|tod, tomorrow|tmrw|tmr|tmw|tomorow|tommorow|tommorrow|2moro|2morrow, day after tomorrow|the day after tomorrow|overmorrow
today -1: yesterday
todayPart 2: tonight|tonite|this evening
this 0: this|the current|current
coming 0: this coming|coming|the coming|this next|upcoming
next 0: next|the next|the following|following
afterNext 0: after next
last 0: last|past|previous
ago 0: ago
begin 0: beginning of|the beginning of|start of|the start of|begin of|early in
begin 1: early
middle 0: middle of|the middle of|mid
end 0: end of|the end of|end
end 1: late|late in
in 0: in|within|in the next|within the next|within about|in about|in around|in exactly|in approximately|in roughly|in just|in at most|after
fromNow 0: from now|later|hence|from today|out
inTime 0: time|s time
before 0: before|prior to|ahead of
after 0: after|from|following
weekOut 0: on|from|_
eve 0: the day before|day before|the eve of|eve of
morrow 0: the day after|day after
at 0: at|by|around|about|approximately
lead DC: on|this|for
lead T: after|any time after|anytime after|sometime after|not before
lead TC: at|about|around|approximately|roughly|exactly|at about|at around|at approximately|at exactly|from about|at roughly
lead DTSPBC: by|on or before|due by|due|due date|no later than|not later than|at the latest by|at the latest|before|until the latest|latest by|deadline
lead DTS: for|due on
lead DSP: sometime|some time|any time|anytime|sometime on|some time on|any time on|anytime on|at some point|at some point on|later
lead DTC: as of|as from|starting|starting on|starting from|starting at|beginning|beginning on
lead DA: on the|due on the|the
lead DTSPBA: by the|before the|due by the|due the|no later than the
lead DA: for the
lead S: of|of the|on the|for the
lead SP: in|in the|during|during the|at|over|over the|at the|early in the|late in the|later
lead DCB: due on
from 0: from|between
of 0: of|in|of the|in the|from the|after
the 0: the
and 0: and|n
or 0: or
range 0: to|till|until|til|thru|through|up to
until 0: until|till|til|up to|ending|ending on|ending in|through|thru
duration 0: for|lasting|during
hedge 0: about|around|approximately|roughly|exactly
hedge 1: sharp|or so|at the latest|latest
every 0: every|each|every single|ev
other 2: other|second|2nd, third|3rd, fourth|4th
frequency 3: daily|everyday, weekly, biweekly|bi weekly|fortnightly, monthly, yearly|annually, _, quarterly, semi annually|half yearly, morning and evening|morning and night
workdays~ 0: weekday|workday|working day|week day|business day
workdays 0: weekdays|workdays|working days|week days|business days, weekends
times 0: times|x
once 1: once|one time, twice|two times, three times|thrice
except 0: except|except for|except on|but|but not|but not on|excluding|apart from
starting 0: starting|starting on|starting from|beginning|beginning on|from
spanEnd 3: eow|end of week, _, eom|end of month, eoy|end of year
feast 1: christmas eve|xmas eve, christmas day, boxing day, new year s eve|new years eve|nye, new year s day|new years day, halloween, valentine s day|valentines day|valentines, easter sunday, easter monday, st patrick s day|st patricks day|saint patrick s day
feast~ 2: christmas|xmas
feast~ 5: new year|new year s
feast~ 8: easter
feast~ 11: thanksgiving, _, _, pentecost
connector 0: at|with|unless|if|as|per|against|regarding|concerning|for|to|and|about|from|on|before|after|in|re|because|when|if|until|till|near|via|the|my|our|per|while|so
forbidsDay 0: last|since|until|till|through|past|all|any|black|good|cyber|casual|freaky|palm|ash|fat|shrove|maundy|holy|blue|bloody|super|ruby|usa|first|second|third|fourth|after|previous|every|each|from|of|than|called|said|whose|and|or
verse 0: john|matthew|mark|luke|genesis|romans|psalm|psalms|acts|exodus|isaiah|proverbs|corinthians
forbidsClock 0: for|during|win|run|ran|chapter|verse|page|room|level|lasting|of|ratio|score|than|every|step|part|episode|season|version|number|no|size|track|issue|grade|scene|act|top
determiner 0: the|a|an|my|your|his|her|our|their|this|that|no
name 0: monday night football|sunday night football|thursday night football|saturday night live|saturday night fever|friday night lights|sunday times|sunday morning worship|today show|tonight show|today programme|tomorrow never dies|tomorrow land|friday the 13th|sunday roast|sunday paper|sunday papers|sunday school|sunday best|monday com|day after tomorrow movie|midnight snack|midnight sun|midnight mass|midnight in paris|high noon|afternoon tea|morning show|evening standard|evening dress|night shift|day off|may day|four seasons|six nations|second hand|second opinion|first aid
name 0: september 11|nine to five|nine eleven|seven eleven|twenty four seven|first class|may be|sun cream
priority 1: p1, p2, p3
priorityWord 0: high|highest|top, medium|normal, low|lowest
flag 0: flag|flagged
alert 0: alert|alarm|remind me|reminder|notify me|with an alert|with alert|with a reminder|with reminder|alert me|ping me|and alert me|and remind me
place 0: at, in
dayBefore 0: the day before|day before|the evening before|the night before
)";

}  // namespace kestrant::speech
