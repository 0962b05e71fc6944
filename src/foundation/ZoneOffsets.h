#pragma once

#include <QTimeZone>

#include <memory>
#include <vector>

namespace kestrant {

/// The spans of time in which a zone keeps one distance from UTC, prepared for fast answers. All times are
/// microseconds since 1970-01-01 UTC, offsets microseconds east of UTC. Immutable. Thread: any.
class ZoneOffsets {
  public:
    /// Start included, end excluded. The first span begins, and the last ends, beyond every representable
    /// date.
    struct Span {
        qint64 start;
        qint64 end;
        qint64 offset;
    };

    /// The zone's offsets; computed once for each zone of the process.
    [[nodiscard]] static std::shared_ptr<const ZoneOffsets> of(const QTimeZone& zone);

    explicit ZoneOffsets(const QTimeZone& zone);

    [[nodiscard]] qint64 at(qint64 utc) const;
    /// The spans that hold any instant from `first` to `last`, in order; never empty.
    [[nodiscard]] std::vector<Span> spansBetween(qint64 first, qint64 last) const;

  private:
    [[nodiscard]] std::vector<Span> computeSpans(qint64 first, qint64 last) const;

    QTimeZone zone_;
    std::vector<Span> spans_;
};

}  // namespace kestrant
