#pragma once

#include "recap/Recap.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace kestrant {

/// All that a shared link tells: a period and how much was completed on each of its days. Plain functions;
/// thread: any.
struct SharedRecap {
    RecapPeriod period;
    Qt::DayOfWeek firstDayOfWeek = Qt::Monday;
    /// The days of the period that have begun; as many as it has, or fewer.
    std::vector<int> days;

    bool operator==(const SharedRecap&) const = default;
};

[[nodiscard]] SharedRecap sharedRecap(const Recap& recap, Qt::DayOfWeek firstDayOfWeek);

/// A recap as base64url without padding; docs/recap-link.md describes the bytes. Absent for days before 1970
/// and for counts of 2^24 and more. One recap has one text.
[[nodiscard]] std::optional<QByteArray> recapFragment(const SharedRecap& recap);
/// Absent for anything that recapFragment() does not write, so that a link that lost its end is not taken for
/// a shorter one.
[[nodiscard]] std::optional<SharedRecap> readRecapFragment(QByteArrayView fragment);

/// The address of the page that shows a recap, with the recap in its fragment, which browsers do not send to
/// the server. Absent where `baseUrl` is no https address (or http address of this machine).
[[nodiscard]] std::optional<QUrl> recapShareLink(const QString& baseUrl, const SharedRecap& recap);

}  // namespace kestrant
