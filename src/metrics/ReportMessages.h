#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Messages between the program and the aggregate completion counter.
namespace kestrant::metrics {

/// One report waiting for upload.
struct Report {
    QString reportID;
    qint64 count = 0;
    /// UTC, "2026-03-27"
    QString createdDay;
    /// Failed uploads so far.
    qint64 attempts = 0;
    /// Seconds since 1970-01-01 UTC.
    double nextAttemptAt = 0;

    bool operator==(const Report&) const = default;
};

/// The whole of what is sent.
struct Payload {
    int schemaVersion = 1;
    QString reportId;
    qint64 count = 0;
    QString reportCreatedDay;

    [[nodiscard]] static Payload of(const Report& report);
    [[nodiscard]] QByteArray toJson() const;
};

struct Acknowledgement {
    QString reportId;
    qint64 count = 0;
    QString status;

    /// Absent when the text is no JSON object or one of the three values is missing, of another type or out
    /// of range. Other keys are ignored.
    [[nodiscard]] static std::optional<Acknowledgement> fromJson(const QByteArray& json);
    /// Whether it says that the server has exactly this report.
    [[nodiscard]] bool isFor(const Report& report) const;
};

}  // namespace kestrant::metrics
