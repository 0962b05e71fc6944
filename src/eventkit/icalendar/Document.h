#pragma once

#include "eventkit/icalendar/ContentLine.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"

#include <tl/expected.hpp>

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace kestrant::icalendar {

/// A component to read: its lines from BEGIN to END. Looks at its own properties, not at those of components
/// within. Valid as long as the lines it looks at.
class ComponentView {
  public:
    explicit ComponentView(std::span<const Line> lines) : lines_(lines) {}

    [[nodiscard]] QByteArray name() const { return lines_.front().componentName(); }
    [[nodiscard]] std::span<const Line> lines() const { return lines_; }
    /// The first property of this name (given in capitals).
    [[nodiscard]] std::optional<Property> property(QByteArrayView propertyName) const;
    [[nodiscard]] std::vector<Property> properties(QByteArrayView propertyName) const;
    /// The components directly within, of this name, in order.
    [[nodiscard]] std::vector<ComponentView> components(QByteArrayView componentName) const;
    /// Its text as it stands.
    [[nodiscard]] QByteArray text() const;

  private:
    std::span<const Line> lines_;
};

/// A component to edit. Lines that are not touched stay as they are, byte for byte.
class Component {
  public:
    explicit Component(std::span<const Line> lines) : lines_(lines.begin(), lines.end()) {}
    /// A new component without properties.
    Component(QByteArrayView name, const QByteArray& lineEnd);
    /// Reads one component from its text; absent when it is not exactly one. Its line ends become `lineEnd`.
    [[nodiscard]] static std::optional<Component> parse(QByteArrayView text, QByteArrayView lineEnd);

    [[nodiscard]] ComponentView view() const { return ComponentView(lines_); }
    [[nodiscard]] const std::vector<Line>& lines() const { return lines_; }

    /// Writes a property in the place of the first one of its name and removes any others; a new one comes
    /// after the last property.
    void set(const Property& property, QByteArrayView lineEnd);
    /// Adds a property after the last one, whatever others of its name there are.
    void append(const Property& property, QByteArrayView lineEnd);
    void remove(QByteArrayView propertyName);
    void append(const Component& component);
    /// Removes the components of this name for which the predicate holds.
    void removeComponents(QByteArrayView componentName,
                          const std::function<bool(const ComponentView&)>& doomed);

  private:
    [[nodiscard]] std::vector<qsizetype> ownLines(QByteArrayView propertyName) const;
    [[nodiscard]] qsizetype afterLastProperty() const;

    std::vector<Line> lines_;
};

/// An iCalendar file, line by line. Thread: one at a time.
class Document {
  public:
    /// Fails, with a reason, for a text that is empty, is something else or breaks off. Otherwise tolerant:
    /// what is not understood is kept.
    [[nodiscard]] static tl::expected<Document, TextPair> parse(QByteArrayView text);
    /// A new calendar that holds nothing yet.
    [[nodiscard]] static Document make();

    [[nodiscard]] QByteArray text() const { return ComponentView(lines_).text(); }
    /// The line end of the first line.
    [[nodiscard]] QByteArrayView lineEnd() const { return lineEnd_; }

    /// The components of this name directly within the calendars, in order.
    [[nodiscard]] std::vector<ComponentView> components(QByteArrayView componentName) const;

    /// The zone that a VTIMEZONE of this name defines; absent where none does, or none that makes sense.
    /// Worked out once.
    [[nodiscard]] std::optional<TimeZone> definedZone(const QByteArray& name) const;

    /// Puts `component` in the place of the index-th one of its name.
    void replace(qsizetype index, const Component& component);
    /// Removes the index-th component of this name.
    void remove(QByteArrayView componentName, qsizetype index);
    /// Puts a component behind the index-th one of its name.
    void insertAfter(qsizetype index, const Component& component);
    /// Adds a component at the end of the last calendar, or before its first component.
    enum class Position { first, last };
    void add(const Component& component, Position at = Position::last);

  private:
    /// A component directly within a calendar, from its first line to before `end`.
    struct Part {
        QByteArray name;
        std::size_t begin;
        std::size_t end;
    };

    void findParts();
    [[nodiscard]] std::optional<TimeZone> findZone(const QByteArray& name) const;
    [[nodiscard]] std::span<const Line> linesOf(QByteArrayView componentName, qsizetype index) const;

    std::vector<Line> lines_;
    std::vector<Part> parts_;
    QByteArray lineEnd_;
    mutable std::map<QByteArray, std::optional<TimeZone>> zones_;
};

}  // namespace kestrant::icalendar
