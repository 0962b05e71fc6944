#include "eventkit/icalendar/Document.h"

#include "eventkit/icalendar/TimeZoneText.h"

#include <algorithm>
#include <utility>

namespace kestrant::icalendar {
namespace {

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");

std::vector<Line> splitLines(QByteArrayView text) {
    std::vector<Line> lines;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = start;
        while (true) {
            const qsizetype feed = text.indexOf('\n', end);
            end = feed < 0 ? text.size() : feed + 1;
            const bool continues = end < text.size() && (text[end] == ' ' || text[end] == '\t');
            if (!continues)
                break;
        }
        lines.emplace_back(text.sliced(start, end - start).toByteArray());
        start = end;
    }
    return lines;
}

QByteArray lineEndOf(const Line& line) {
    if (line.raw().endsWith('\n') && !line.raw().endsWith("\r\n"))
        return "\n";
    return "\r\n";
}

/// Calls `visit(begin, end)` for each component directly at the top of these lines, `end` excluded.
template <typename Visit>
void forEachComponent(std::span<const Line> lines, Visit visit) {
    std::size_t begin = 0;
    int depth = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].isBegin()) {
            if (depth++ == 0)
                begin = i;
        } else if (lines[i].isEnd() && --depth == 0) {
            visit(begin, i + 1);
        }
    }
}

std::span<const Line> inside(std::span<const Line> component) {
    return component.subspan(1, component.size() - 2);
}

/// Calls `visit(index)` for each line that is a property of the component itself.
template <typename Visit>
void forEachOwnLine(std::span<const Line> lines, Visit visit) {
    int depth = 0;
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        if (lines[i].isBegin())
            ++depth;
        else if (lines[i].isEnd())
            --depth;
        else if (depth == 0)
            visit(i);
    }
}

/// Where the lines break the nesting of components; absent when they do not.
std::optional<TextPair> brokenNesting(const std::vector<Line>& lines) {
    std::vector<QByteArray> open;
    for (const Line& line : lines) {
        if (line.isBegin()) {
            open.push_back(line.componentName());
        } else if (line.isEnd()) {
            if (open.empty() || open.back() != line.componentName())
                return text("its parts are not nested properly", "ses parties ne sont pas bien imbriquées");
            open.pop_back();
        }
    }
    if (!open.empty())
        return text("it breaks off", "il est incomplet");
    return std::nullopt;
}

}  // namespace

std::optional<Property> ComponentView::property(QByteArrayView propertyName) const {
    std::optional<Property> result;
    forEachOwnLine(lines_, [&](std::size_t i) {
        if (!result && lines_[i].isNamed(propertyName))
            result = Property::parse(lines_[i].content());
    });
    return result;
}

std::vector<Property> ComponentView::properties(QByteArrayView propertyName) const {
    std::vector<Property> result;
    forEachOwnLine(lines_, [&](std::size_t i) {
        if (lines_[i].isNamed(propertyName))
            result.push_back(Property::parse(lines_[i].content()));
    });
    return result;
}

std::vector<ComponentView> ComponentView::components(QByteArrayView componentName) const {
    std::vector<ComponentView> result;
    const auto content = inside(lines_);
    forEachComponent(content, [&](std::size_t begin, std::size_t end) {
        if (content[begin].componentName() == componentName)
            result.emplace_back(content.subspan(begin, end - begin));
    });
    return result;
}

QByteArray ComponentView::text() const {
    QByteArray result;
    for (const Line& line : lines_)
        result.append(line.raw());
    return result;
}

Component::Component(QByteArrayView name, const QByteArray& lineEnd) {
    lines_.push_back(Line::make("BEGIN:" + name.toByteArray(), lineEnd));
    lines_.push_back(Line::make("END:" + name.toByteArray(), lineEnd));
}

std::optional<Component> Component::parse(QByteArrayView text, QByteArrayView lineEnd) {
    std::vector<Line> lines;
    for (const Line& line : splitLines(text)) {
        if (!line.content().isEmpty())
            lines.push_back(lineEndOf(line) == lineEnd && line.raw().endsWith('\n')
                                ? line
                                : Line::make(line.content(), lineEnd));
    }
    if (lines.size() < 2 || !lines.front().isBegin() || brokenNesting(lines))
        return std::nullopt;
    std::size_t components = 0;
    std::size_t covered = 0;
    forEachComponent(lines, [&](std::size_t begin, std::size_t end) {
        ++components;
        covered += end - begin;
    });
    if (components != 1 || covered != lines.size())
        return std::nullopt;
    return Component(lines);
}

std::vector<qsizetype> Component::ownLines(QByteArrayView propertyName) const {
    std::vector<qsizetype> result;
    forEachOwnLine(lines_, [&](std::size_t i) {
        if (lines_[i].isNamed(propertyName))
            result.push_back(static_cast<qsizetype>(i));
    });
    return result;
}

qsizetype Component::afterLastProperty() const {
    std::size_t position = 1;
    while (position + 1 < lines_.size() && !lines_[position].isBegin())
        ++position;
    return static_cast<qsizetype>(position);
}

void Component::set(const Property& property, QByteArrayView lineEnd) {
    const auto existing = ownLines(property.name);
    if (existing.empty()) {
        append(property, lineEnd);
        return;
    }
    lines_[static_cast<std::size_t>(existing.front())] = Line::make(property.toContent(), lineEnd);
    for (auto it = existing.rbegin(); it + 1 != existing.rend(); ++it)
        lines_.erase(lines_.begin() + *it);
}

void Component::append(const Property& property, QByteArrayView lineEnd) {
    lines_.insert(lines_.begin() + afterLastProperty(), Line::make(property.toContent(), lineEnd));
}

void Component::remove(QByteArrayView propertyName) {
    const auto existing = ownLines(propertyName);
    for (auto it = existing.rbegin(); it != existing.rend(); ++it)
        lines_.erase(lines_.begin() + *it);
}

void Component::append(const Component& component) {
    lines_.insert(lines_.end() - 1, component.lines_.begin(), component.lines_.end());
}

void Component::removeComponents(QByteArrayView componentName,
                                 const std::function<bool(const ComponentView&)>& doomed) {
    std::vector<std::pair<std::size_t, std::size_t>> ranges;
    const std::span<const Line> content = inside(lines_);
    forEachComponent(content, [&](std::size_t begin, std::size_t end) {
        if (content[begin].componentName() == componentName &&
            doomed(ComponentView(content.subspan(begin, end - begin))))
            ranges.emplace_back(begin + 1, end + 1);
    });
    for (auto it = ranges.rbegin(); it != ranges.rend(); ++it)
        lines_.erase(lines_.begin() + static_cast<qsizetype>(it->first),
                     lines_.begin() + static_cast<qsizetype>(it->second));
}

tl::expected<Document, TextPair> Document::parse(QByteArrayView text) {
    Document document;
    document.lines_ = splitLines(text);
    const auto isBlank = [](const Line& line) { return line.content().trimmed().isEmpty(); };
    const auto first = std::find_if_not(document.lines_.begin(), document.lines_.end(), isBlank);
    if (first == document.lines_.end())
        return tl::unexpected(kestrant::text("it is empty", "il est vide"));
    QByteArray opening = first->content().toByteArray();
    if (opening.startsWith(byteOrderMark))
        opening.remove(0, byteOrderMark.size());
    if (opening.trimmed().toUpper() != "BEGIN:VCALENDAR")
        return tl::unexpected(
            kestrant::text("it is no calendar file", "ce n’est pas un fichier de calendrier"));
    document.lineEnd_ = lineEndOf(*first);
    // A byte order mark becomes a line of its own, so that the first line is the one that begins the
    // calendar.
    if (first->raw().startsWith(byteOrderMark)) {
        const QByteArray rest = first->raw().sliced(byteOrderMark.size());
        *first = Line(byteOrderMark.toByteArray());
        document.lines_.insert(first + 1, Line(rest));
    }
    if (auto reason = brokenNesting(document.lines_))
        return tl::unexpected(std::move(*reason));
    document.findParts();
    return document;
}

Document Document::make() {
    return *parse("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Kestrant//Kestrant//EN\r\nEND:VCALENDAR\r\n");
}

void Document::findParts() {
    parts_.clear();
    zones_.clear();
    const std::span<const Line> lines(lines_);
    forEachComponent(lines, [&](std::size_t begin, std::size_t end) {
        if (lines[begin].componentName() != "VCALENDAR")
            return;
        forEachComponent(inside(lines.subspan(begin, end - begin)), [&](std::size_t from, std::size_t to) {
            parts_.push_back({lines[begin + 1 + from].componentName(), begin + 1 + from, begin + 1 + to});
        });
    });
}

std::vector<ComponentView> Document::components(QByteArrayView componentName) const {
    std::vector<ComponentView> result;
    for (const Part& part : parts_) {
        if (part.name == componentName)
            result.emplace_back(std::span<const Line>(lines_).subspan(part.begin, part.end - part.begin));
    }
    return result;
}

std::optional<TimeZone> Document::definedZone(const QByteArray& name) const {
    const bool definesZones =
        std::any_of(parts_.begin(), parts_.end(), [](const Part& part) { return part.name == "VTIMEZONE"; });
    if (!definesZones)
        return std::nullopt;
    const auto found = zones_.find(name);
    return found != zones_.end() ? found->second : zones_.emplace(name, findZone(name)).first->second;
}

std::optional<TimeZone> Document::findZone(const QByteArray& name) const {
    for (const ComponentView& definition : components("VTIMEZONE")) {
        const auto identifier = definition.property("TZID");
        if (!identifier || (zoneIdentifierIn(*identifier) != name && identifier->value.trimmed() != name))
            continue;
        if (auto zone = zoneDefinedBy(definition))
            return zone;
        const auto location = definition.property("X-LIC-LOCATION");
        return location ? TimeZone::named(location->value.trimmed()) : std::nullopt;
    }
    return std::nullopt;
}

std::span<const Line> Document::linesOf(QByteArrayView componentName, qsizetype index) const {
    return components(componentName).at(static_cast<std::size_t>(index)).lines();
}

void Document::replace(qsizetype index, const Component& component) {
    const auto old = linesOf(component.view().name(), index);
    const auto begin = old.data() - lines_.data();
    lines_.erase(lines_.begin() + begin, lines_.begin() + begin + static_cast<qsizetype>(old.size()));
    lines_.insert(lines_.begin() + begin, component.lines().begin(), component.lines().end());
    findParts();
}

void Document::remove(QByteArrayView componentName, qsizetype index) {
    const auto old = linesOf(componentName, index);
    const auto begin = old.data() - lines_.data();
    lines_.erase(lines_.begin() + begin, lines_.begin() + begin + static_cast<qsizetype>(old.size()));
    findParts();
}

void Document::insertAfter(qsizetype index, const Component& component) {
    const auto before = linesOf(component.view().name(), index);
    const auto end = before.data() - lines_.data() + static_cast<qsizetype>(before.size());
    lines_.insert(lines_.begin() + end, component.lines().begin(), component.lines().end());
    findParts();
}

void Document::add(const Component& component, Position at) {
    std::size_t begin = 0;
    std::size_t end = 0;
    forEachComponent(lines_, [&](std::size_t from, std::size_t to) {
        if (lines_[from].componentName() == "VCALENDAR") {
            begin = from;
            end = to;
        }
    });
    std::size_t position = end - 1;
    if (at == Position::first) {
        position = begin + 1;
        while (position + 1 < end && !lines_[position].isBegin())
            ++position;
    }
    lines_.insert(lines_.begin() + static_cast<qsizetype>(position), component.lines().begin(),
                  component.lines().end());
    findParts();
}

}  // namespace kestrant::icalendar
