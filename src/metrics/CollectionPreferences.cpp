#include "metrics/CollectionPreferences.h"

#include "foundation/UserDefaults.h"
#include "metrics/MetricsStore.h"
#include "network/ServiceUrl.h"
#include "preferences/PreferenceKeys.h"

#include <QJsonObject>

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrant::metrics {

namespace {

constexpr auto countName = QLatin1String("count");
constexpr auto epochName = QLatin1String("epoch");

}  // namespace

qint64 cappedSum(qint64 a, qint64 b) {
    return a + std::min(b, std::numeric_limits<qint64>::max() - a);
}

Configuration Configuration::from(const InformationDictionary& information) {
    Configuration configuration;
    if (const auto url = information.string(InformationDictionary::aggregateMetricsBaseUrlKey))
        configuration.baseURL = protectedServiceUrl(*url);
    configuration.isAvailable =
        information.boolean(InformationDictionary::aggregateMetricsPrivacyReadyKey) == true &&
        information.boolean(InformationDictionary::aggregateMetricsUploadEnabledKey) == true &&
        configuration.baseURL;
    configuration.isEnabled = configuration.isAvailable;
    return configuration;
}

CollectionPreferences::CollectionPreferences(const InformationDictionary& information, UserDefaults& defaults,
                                             std::function<QUuid()> freshUuid)
    : configuration_(Configuration::from(information))
    , defaults_(defaults)
    , freshUuid_(std::move(freshUuid)) {}

Configuration CollectionPreferences::configuration() const {
    Configuration configuration = configuration_;
    configuration.isEnabled = configuration.isAvailable && isSwitchedOn();
    return configuration;
}

bool CollectionPreferences::isSwitchedOn() const {
    return defaults_.boolean(preferenceKeys::aggregateMetricsEnabled).value_or(true);
}

void CollectionPreferences::setEnabled(bool enabled) {
    const std::lock_guard guard(state_.lock);
    if (isSwitchedOn() != enabled)
        beginEpoch(freshUuid_());
    defaults_.set(preferenceKeys::aggregateMetricsEnabled, enabled);
    if (enabled)
        return;
    forgetLeft();
    defaults_.set(preferenceKeys::aggregateMetricsDiscardPending, true);
    if (const auto upload = std::exchange(state_.upload, std::nullopt))
        upload->cancel();
}

std::optional<CollectionTicket> CollectionPreferences::ticket() {
    const std::lock_guard guard(state_.lock);
    return currentTicket();
}

std::optional<CollectionTicket> CollectionPreferences::ticketWithEpoch(const QUuid& known) {
    const std::lock_guard guard(state_.lock);
    auto ticket = currentTicket();
    if (ticket && ticket->epoch.isNull()) {
        ticket->epoch = known.isNull() ? freshUuid_() : known;
        beginEpoch(ticket->epoch);
    }
    return ticket;
}

std::optional<CollectionTicket> CollectionPreferences::currentTicket() const {
    if (!configuration_.isAvailable || !isSwitchedOn())
        return std::nullopt;
    return CollectionTicket{
        epochFrom(defaults_.string(preferenceKeys::aggregateMetricsCollectionEpoch).value_or(QString()))};
}

void CollectionPreferences::beginEpoch(const QUuid& epoch) {
    defaults_.set(preferenceKeys::aggregateMetricsCollectionEpoch, epochText(epoch));
}

bool CollectionPreferences::isDiscardPending() const {
    return defaults_.boolean(preferenceKeys::aggregateMetricsDiscardPending).value_or(false);
}

void CollectionPreferences::discardDone() {
    defaults_.remove(preferenceKeys::aggregateMetricsDiscardPending);
}

UnsavedCount CollectionPreferences::left() const {
    const QJsonObject value = defaults_.object(preferenceKeys::aggregateMetricsUnsaved).toObject();
    return {std::max<qint64>(value[countName].toInteger(), 0), epochFrom(value[epochName].toString())};
}

void CollectionPreferences::leave(const UnsavedCount& unsaved) {
    const UnsavedCount before = left();
    const qint64 sum = before.epoch == unsaved.epoch ? cappedSum(before.count, unsaved.count) : unsaved.count;
    defaults_.set(preferenceKeys::aggregateMetricsUnsaved,
                  QJsonObject{{countName, sum}, {epochName, epochText(unsaved.epoch)}});
}

void CollectionPreferences::forgetLeft() {
    defaults_.remove(preferenceKeys::aggregateMetricsUnsaved);
}

bool CollectionPreferences::beginUpload(PreferenceState::Upload upload) {
    const std::lock_guard guard(state_.lock);
    if (currentTicket() != upload.ticket)
        return false;
    state_.upload = std::move(upload);
    return true;
}

bool CollectionPreferences::endUpload(int number) {
    const std::lock_guard guard(state_.lock);
    if (!state_.upload || state_.upload->number != number)
        return false;
    state_.upload.reset();
    return true;
}

bool CollectionPreferences::isUploading() const {
    const std::lock_guard guard(state_.lock);
    return state_.upload.has_value();
}

}  // namespace kestrant::metrics
