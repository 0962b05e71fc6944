// iCalendar text to reminders and events and back: text is kept, a change is visible, reverting restores what
// was.

#include "eventkit/icalendar/Document.h"
#include "eventkit/icalendar/Event.h"
#include "eventkit/icalendar/Reverting.h"
#include "eventkit/icalendar/Todo.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"
#include "fuzzing.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

using namespace kestrant;
using namespace kestrant::icalendar;

namespace {

/// More items than these tell nothing new.
constexpr std::size_t mostItems = 4;
const QString newTitle = QStringLiteral("Changed; by, a \\ test\nin two lines");

const TimeZone& local() {
    static const TimeZone zone(*TimeZone::named("Europe/Paris"));
    return zone;
}

/// The lines that a change of the title may touch; all others stay as they were.
bool belongsToTitleOrRevision(const QByteArray& name) {
    static const QByteArrayList names{"SUMMARY", "LAST-MODIFIED", "DTSTAMP", "SEQUENCE", "CREATED"};
    return names.contains(name.toUpper());
}

QByteArrayList otherLines(ComponentView component) {
    QByteArrayList result;
    bool within = false;
    int depth = 0;
    for (const Line& line : component.lines()) {
        depth += line.isBegin() ? 1 : 0;
        within = depth > 1;
        if (within || !belongsToTitleOrRevision(Property::parse(line.content()).name.trimmed()))
            result.append(ComponentView(std::span(&line, 1)).text());
        depth -= line.isEnd() ? 1 : 0;
    }
    return result;
}

std::optional<QByteArray> valueOf(ComponentView component, QByteArrayView name) {
    const std::optional<Property> property = component.property(name);
    return property ? std::optional(property->value) : std::nullopt;
}

template <typename Item, typename Data, typename Read, typename Write>
void checkItems(const Document& document, QByteArrayView name, Data Item::*data, Read read, Write write) {
    const std::vector<Item> items = read(document);
    const Instant now{std::chrono::seconds(1'780'000'000)};
    for (std::size_t index = 0; index < std::min(items.size(), mostItems); ++index) {
        const Item& item = items[index];
        Data after = item.*data;
        after.title = newTitle;
        const std::vector<ComponentView> components = document.components(name);
        const ComponentView before = components[std::size_t(item.index)];
        Component changed(before.lines());
        write(changed, item, after, document, now);
        KESTRANT_REQUIRE(otherLines(before) == otherLines(changed.view()));

        Document written = document;
        written.replace(item.index, changed);
        const auto again = Document::parse(written.text());
        KESTRANT_REQUIRE(again.has_value());
        const std::vector<Item> reread = read(*again);
        KESTRANT_REQUIRE(reread.size() == items.size());
        KESTRANT_REQUIRE((reread[index].*data).title == newTitle);

        const auto back = reverted(changed.view(), before, changed.view(), document.lineEnd(), now);
        KESTRANT_REQUIRE(back.has_value());
        KESTRANT_REQUIRE(valueOf(back->view(), "SUMMARY") == valueOf(before, "SUMMARY"));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char*>(bytes), qsizetype(size));
    const auto document = Document::parse(text);
    if (!document)
        return 0;
    KESTRANT_REQUIRE(document->text() == text);
    checkItems<TodoItem>(
        *document, "VTODO", &TodoItem::data, [](const Document& read) { return readTodos(read, local()); },
        [](Component& todo, const TodoItem& item, const EKReminderData& after, const Document& file,
           Instant now) { writeTodo(todo, item, after, file, local(), now); });
    struct ReadEvent : EventItem {
        explicit ReadEvent(EventItem item) : EventItem(std::move(item)), data(event.data) {
            const DateInterval interval = intervalOf(event.times, local());
            data.startDate = interval.start;
            data.endDate = interval.end;
        }
        EKEventData data;
    };
    checkItems<ReadEvent>(
        *document, "VEVENT", &ReadEvent::data,
        [](const Document& read) {
            std::vector<ReadEvent> result;
            for (EventItem& item : readEvents(read, local()))
                result.emplace_back(std::move(item));
            return result;
        },
        [](Component& event, const ReadEvent& item, const EKEventData& after, const Document& file,
           Instant now) { writeEvent(event, item.event.times, item.data, after, file, local(), now); });
    return 0;
}
