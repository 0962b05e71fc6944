// Quick-add lines: what was understood stands in the line, and refusing all of it leaves the whole line as
// the title.

#include "foundation/Text.h"
#include "fuzzing.h"
#include "reminders/quickadd/QuickAddParser.h"

#include <cstddef>
#include <cstdint>

using namespace kestrant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 1 || size > 4096)
        return 0;
    QuickAddContext context{.now = Instant{std::chrono::seconds(1'772'000'000 + bytes[0] * 86'400)},
                            .zone = *TimeZone::named("Europe/Paris"),
                            .language = bytes[0] % 2 ? Language::french : Language::english,
                            .lists = {}};
    const QString line = QString::fromUtf8(reinterpret_cast<const char*>(bytes) + 1, qsizetype(size) - 1);
    const QuickAddLine read = parseQuickAdd(line, context);
    KESTRANT_REQUIRE(read.title.size() <= line.size());
    KESTRANT_REQUIRE(read.day || !read.time);
    KESTRANT_REQUIRE(!read.day || read.day->isValid());
    std::vector<TextRange> refused;
    qsizetype end = 0;
    for (const QuickAddPiece& piece : read.pieces) {
        KESTRANT_REQUIRE(piece.range.start >= end && piece.range.length > 0 &&
                         piece.range.end() <= line.size());
        end = piece.range.end();
        refused.push_back(piece.range);
    }
    const QuickAddLine whole = parseQuickAdd(line, context, {{0, line.size()}});
    KESTRANT_REQUIRE(whole.pieces.empty() && !whole.day && !whole.priority && !whole.listID && !whole.rule);
    KESTRANT_REQUIRE(!read.rule || read.day);
    KESTRANT_REQUIRE(whole.title.simplified() == line.simplified());
    for (const QuickAddPiece& piece : parseQuickAdd(line, context, refused).pieces) {
        for (const TextRange& range : refused)
            KESTRANT_REQUIRE(!piece.range.overlaps(range));
    }
    return 0;
}
