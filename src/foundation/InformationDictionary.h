#pragma once

#include "foundation/Text.h"

#include <QJsonObject>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// Deployment values of the application: its version, the addresses of the services it talks
/// to and the switches that go with them. They are set when the program is configured for building (the cache
/// variables KESTRANT_…) and never change while it runs. A value. Thread: any.
class InformationDictionary {
  public:
    static constexpr auto shortVersionKey = "CFBundleShortVersionString";
    static constexpr auto aggregateMetricsBaseUrlKey = "KestrantAggregateMetricsBaseURL";
    static constexpr auto aggregateMetricsPrivacyReadyKey = "KestrantAggregateMetricsPrivacyReady";
    static constexpr auto aggregateMetricsUploadEnabledKey = "KestrantAggregateMetricsUploadEnabled";
    static constexpr auto feedbackBaseUrlKey = "KestrantFeedbackAPIBaseURL";
    static constexpr auto recapShareBaseUrlKey = "KestrantRecapShareBaseURL";

    /// Where values other than the built-in ones may come from, besides a file named on the command line.
    enum class OverridePolicy {
        /// From nowhere: a release cannot be redirected by a file that someone left behind.
        onlyNamedFile,
        /// From the usual file, when there is one.
        usualFile,
    };

    explicit InformationDictionary(QJsonObject values = {}) : values_(std::move(values)) {}

    /// The values this program was built with. A text that was configured empty is absent.
    [[nodiscard]] static InformationDictionary builtIn();
    /// `onlyNamedFile` in a release build.
    [[nodiscard]] static OverridePolicy builtInPolicy();

    /// The built-in values, overlaid by those of the named file, or where none is named and the policy allows
    /// it, by those of the usual file if that exists. Both hold one JSON object. Fails with a sentence for
    /// the person who starts the program when a file cannot be read or holds anything else.
    [[nodiscard]] static tl::expected<InformationDictionary, TextPair>
    load(const std::optional<QString>& namedFile, const QString& usualFile,
         OverridePolicy policy = builtInPolicy());

    /// Absent when the value is missing or of another type.
    [[nodiscard]] std::optional<QString> string(const QString& key) const;
    [[nodiscard]] std::optional<bool> boolean(const QString& key) const;

    /// These values, with those of `values` in the place of the ones that have the same key.
    [[nodiscard]] InformationDictionary overlaidBy(const QJsonObject& values) const;

  private:
    QJsonObject values_;
};

}  // namespace kestrant
