#include "eventkit/icalendar/Reverting.h"

#include "eventkit/icalendar/DateValue.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

namespace kestrant::icalendar {
namespace {

/// A property line, or a component within from BEGIN to END.
struct Part {
    QByteArray name;
    std::vector<Line> lines;
};

std::vector<Part> partsOf(ComponentView component) {
    std::vector<Part> parts;
    const auto lines = component.lines();
    int depth = 0;
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        if (depth == 0) {
            const QByteArray name = lines[i].isBegin() ? "BEGIN:" + lines[i].componentName()
                                                       : Property::parse(lines[i].content()).name.toUpper();
            parts.push_back({name, {}});
        }
        parts.back().lines.push_back(lines[i]);
        if (lines[i].isBegin())
            ++depth;
        else if (lines[i].isEnd())
            --depth;
    }
    return parts;
}

/// What is said under each name, however it is folded. That an alarm was dealt with is no part of what it
/// says, nor is what a service calls it.
std::map<QByteArray, QByteArrayList> contentsOf(const std::vector<Part>& parts) {
    std::map<QByteArray, QByteArrayList> result;
    for (const Part& part : parts) {
        for (const Line& line : part.lines) {
            if (!line.isNamed("ACKNOWLEDGED") && !line.isNamed("X-EVOLUTION-ALARM-UID"))
                result[part.name].append(line.content().toByteArray());
        }
    }
    return result;
}

const QByteArrayList& find(const std::map<QByteArray, QByteArrayList>& contents, const QByteArray& name) {
    static const QByteArrayList nothing;
    const auto found = contents.find(name);
    return found == contents.end() ? nothing : found->second;
}

/// The date of creation is among them: it was noted when the date of the revision took its place. So is what
/// a service notes of the server's version, and the UID, which some services choose anew.
bool isRevisionMark(const QByteArray& name) {
    return name == "CREATED" || name == "X-EVOLUTION-CALDAV-ETAG" || name == "DTSTAMP" ||
           name == "LAST-MODIFIED" || name == "SEQUENCE" || name == "UID";
}

/// The names to restore; absent where somebody else has changed one of them.
std::optional<std::set<QByteArray>> namesToRestore(const std::vector<Part>& current,
                                                   const std::vector<Part>& before,
                                                   const std::vector<Part>& after) {
    const auto now = contentsOf(current);
    const auto then = contentsOf(before);
    const auto changed = contentsOf(after);
    std::set<QByteArray> result;
    for (const auto* contents : {&then, &changed}) {
        for (const auto& [name, lines] : *contents) {
            const QByteArrayList& present = find(now, name);
            const QByteArrayList& wanted = find(then, name);
            const QByteArrayList& left = find(changed, name);
            if (isRevisionMark(name) || wanted == left || present == wanted)
                continue;
            if (present != left)
                return std::nullopt;
            result.insert(name);
        }
    }
    return result;
}

}  // namespace

bool saySame(ComponentView a, ComponentView b) {
    const auto saidBy = [](ComponentView component) {
        auto contents = contentsOf(partsOf(component));
        std::erase_if(contents, [](const auto& entry) { return isRevisionMark(entry.first); });
        return contents;
    };
    return saidBy(a) == saidBy(b);
}

std::optional<Component> reverted(ComponentView current, ComponentView before, ComponentView after,
                                  QByteArrayView lineEnd, Instant now) {
    std::vector<Part> parts = partsOf(current);
    const std::vector<Part> wanted = partsOf(before);
    const auto names = namesToRestore(parts, wanted, partsOf(after));
    if (!names)
        return std::nullopt;
    for (const QByteArray& name : *names) {
        const auto isIt = [&](const Part& part) { return part.name == name; };
        auto place = std::find_if(parts.begin(), parts.end(), isIt);
        // New properties go before the components, new components to the end.
        if (place == parts.end() && !name.startsWith("BEGIN:"))
            place = std::find_if(parts.begin(), parts.end(),
                                 [](const Part& part) { return part.name.startsWith("BEGIN:"); });
        const auto position = std::distance(parts.begin(), place);
        std::erase_if(parts, isIt);
        std::vector<Part> restored;
        std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(restored), isIt);
        parts.insert(parts.begin() + position, restored.begin(), restored.end());
    }
    std::vector<Line> lines{current.lines().front()};
    for (const Part& part : parts)
        lines.insert(lines.end(), part.lines.begin(), part.lines.end());
    lines.push_back(current.lines().back());
    Component result(lines);
    const auto sequence = result.view().property("SEQUENCE");
    result.set({"LAST-MODIFIED", {}, utcText(now)}, lineEnd);
    result.set({"DTSTAMP", {}, utcText(now)}, lineEnd);
    result.set({"SEQUENCE", {}, QByteArray::number((sequence ? sequence->value.trimmed().toInt() : 0) + 1)},
               lineEnd);
    return result;
}

}  // namespace kestrant::icalendar
