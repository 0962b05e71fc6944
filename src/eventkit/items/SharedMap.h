#pragma once

#include <QHash>
#include <QString>

#include <array>
#include <cstddef>
#include <limits>
#include <utility>

namespace kestrant::items {

/// Values by their identifiers, in parts that copies share until one of them is changed: a copy costs nothing
/// that grows with the number of values, and a change what the values of one part do. In no particular order.
/// Thread: as a value.
template <typename Value>
class SharedMap {
  public:
    /// Null where there is none; valid until the next change.
    [[nodiscard]] const Value* find(const QString& identifier) const {
        const auto& part = parts_[indexOf(identifier)];
        const auto found = part.constFind(identifier);
        return found == part.cend() ? nullptr : &*found;
    }
    [[nodiscard]] bool contains(const QString& identifier) const { return find(identifier) != nullptr; }
    [[nodiscard]] Value value(const QString& identifier) const {
        const Value* const found = find(identifier);
        return found ? *found : Value();
    }
    [[nodiscard]] qsizetype size() const {
        qsizetype result = 0;
        for (const auto& part : parts_)
            result += part.size();
        return result;
    }

    void reserve(qsizetype size) {
        for (auto& part : parts_)
            part.reserve(size / qsizetype(parts_.size()));
    }
    void insert(const QString& identifier, Value value) {
        parts_[indexOf(identifier)].insert(identifier, std::move(value));
    }
    void remove(const QString& identifier) { parts_[indexOf(identifier)].remove(identifier); }

    /// Visits each value; valid until the next change.
    class Iterator {
      public:
        const Value& operator*() const { return *value_; }
        Iterator& operator++() {
            ++value_;
            skipEmptyParts();
            return *this;
        }
        bool operator==(const Iterator& other) const {
            return part_ == other.part_ && (isAtEnd() || value_ == other.value_);
        }

      private:
        friend class SharedMap;
        Iterator(const SharedMap& map, std::size_t part) : map_(&map), part_(part) {
            if (!isAtEnd())
                value_ = map_->parts_[part_].cbegin();
            skipEmptyParts();
        }
        [[nodiscard]] bool isAtEnd() const { return part_ == map_->parts_.size(); }
        void skipEmptyParts() {
            while (!isAtEnd() && value_ == map_->parts_[part_].cend()) {
                if (++part_ < map_->parts_.size())
                    value_ = map_->parts_[part_].cbegin();
            }
        }

        const SharedMap* map_;
        std::size_t part_;
        typename QHash<QString, Value>::const_iterator value_;
    };
    [[nodiscard]] Iterator begin() const { return Iterator(*this, 0); }
    [[nodiscard]] Iterator end() const { return Iterator(*this, parts_.size()); }

    /// Whether both are known to be the same, since nothing was changed since one was copied from the other.
    [[nodiscard]] bool isSharedWith(const SharedMap& other) const {
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            if (!parts_[i].isSharedWith(other.parts_[i]))
                return false;
        }
        return true;
    }

  private:
    static constexpr int indexBits = 8;

    /// A part itself tells its values apart by the low bits of the same hash.
    static std::size_t indexOf(const QString& identifier) {
        return qHash(identifier, QHashSeed::globalSeed()) >>
               (std::numeric_limits<size_t>::digits - indexBits);
    }

    std::array<QHash<QString, Value>, 1U << indexBits> parts_;
};

}  // namespace kestrant::items
