#pragma once

#include "foundation/Instant.h"

#include <QByteArray>
#include <QDate>
#include <QTime>

#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

struct DateComponents;
struct DateInterval;

/// The clocks of a zone are set: from a moment on they show another distance from UTC, or another name for
/// it.
struct ZoneChange {
    /// Seconds since 1970-01-01 UTC.
    qint64 at = 0;
    /// Seconds east of UTC.
    int offset = 0;
    bool isDaylight = false;
    /// "CEST"; may be empty.
    QByteArray abbreviation;

    bool operator==(const ZoneChange&) const = default;
};

/// All changes of a zone's clocks.
struct ZoneChanges {
    /// The offset before the first change.
    ZoneChange before;
    /// In order.
    std::vector<ZoneChange> changes;
    /// The first year whose changes are not written out. Where there is one, the changes of the 28 years
    /// before it go on: each later year is like the one of these that has the same days of the week.
    std::optional<int> repeatsFrom;

    bool operator==(const ZoneChanges&) const = default;
};

/// The treatment of a local time that the clock skips. A repeated local time is always its first occurrence.
enum class GapPolicy {
    /// The offset before the gap is applied, so 02:30 in a gap of one hour is 03:30 (RFC 5545, 3.3.5).
    keepOffset,
    /// The first existing time after the gap: 03:00.
    nextExisting,
};

/// A time zone: the distance of its clocks from UTC at each moment, and with it the conversion between
/// instants and its local dates and times (proleptic Gregorian, years 0001 to 9999). One of the system's zone
/// data, or one that a file has defined. An immutable value; cheap to copy. Thread: any.
class TimeZone {
  public:
    /// UTC.
    TimeZone();

    /// The zone of an IANA name ("Europe/Paris", with the older names and links of the system's zone data),
    /// of "UTC", of a distance from it ("UTC+05:30"), or of a Windows name ("Romance Standard Time"), which
    /// is then known by its IANA name. Absent for any other name. Each is read once for the process.
    [[nodiscard]] static std::optional<TimeZone> named(const QByteArray& name);
    /// A zone that `identifier` alone does not lead to.
    [[nodiscard]] static TimeZone defined(const QByteArray& identifier, ZoneChanges changes);

    [[nodiscard]] const QByteArray& id() const { return data_->identifier; }
    [[nodiscard]] bool isUtc() const { return data_->kind == Kind::utc; }
    /// Whether its name is all that somebody else needs.
    [[nodiscard]] bool isNamed() const { return data_->kind != Kind::defined; }

    [[nodiscard]] std::chrono::seconds offsetAt(Instant instant) const;
    /// When its clocks show `local`, the time since 1970-01-01T00:00 on them.
    [[nodiscard]] Instant instantAt(Duration local, GapPolicy policy) const;
    /// The offset in force at an instant.
    [[nodiscard]] ZoneChange presentAt(Instant instant) const;
    /// The changes from `first` on and before `end`.
    [[nodiscard]] std::vector<ZoneChange> changesBetween(Instant first, Instant end) const;

    [[nodiscard]] QDate dayOf(Instant instant) const;
    [[nodiscard]] QTime timeOf(Instant instant) const;
    /// The first instant of a day; where midnight is skipped, the first that exists.
    [[nodiscard]] Instant startOfDay(QDate day) const;
    [[nodiscard]] Instant startOfDay(Instant instant) const { return startOfDay(dayOf(instant)); }
    /// An invalid day or time gives 1970-01-01.
    [[nodiscard]] Instant instantAt(QDate day, QTime time, GapPolicy policy = GapPolicy::keepOffset) const;
    [[nodiscard]] bool isSameDay(Instant a, Instant b) const { return dayOf(a) == dayOf(b); }
    /// The calendar year that contains the instant.
    [[nodiscard]] DateInterval yearContaining(Instant instant) const;

    /// The instant that the components denote: a whole day is its start; a time is read in the components'
    /// own zone, or in this one where they have none. Absent when they name no day or no valid time.
    [[nodiscard]] std::optional<Instant> instantFrom(const DateComponents& components) const;
    /// Components of an instant in this zone, with this zone.
    [[nodiscard]] DateComponents componentsOf(Instant instant) const;

    bool operator==(const TimeZone& other) const { return data_ == other.data_ || *data_ == *other.data_; }

  private:
    enum class Kind { utc, named, defined };
    struct Data {
        Kind kind = Kind::utc;
        QByteArray identifier;
        ZoneChanges zone;
        /// Seconds since 1970 at which the years begin that are not written out; beyond every date where
        /// nothing repeats.
        qint64 end = 0;

        bool operator==(const Data&) const = default;
    };

    TimeZone(Kind kind, const QByteArray& identifier, ZoneChanges zone);
    [[nodiscard]] static std::optional<TimeZone> find(const QByteArray& name);
    [[nodiscard]] const ZoneChange& presentIn(qint64 seconds) const;
    [[nodiscard]] qint64 localMicroseconds(Instant instant) const;
    [[nodiscard]] qint64 secondsToRepeated(qint64 seconds) const;

    std::shared_ptr<const Data> data_;
};

}  // namespace kestrant
