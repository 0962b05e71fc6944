// JSON from files and services: the ledger survives its own encoding, settings of any type have defaults, and
// no answer of a service is taken for another.

#include "completion/CompletionLedger.h"
#include "fuzzing.h"
#include "metrics/ReportMessages.h"
#include "preferences/Preferences.h"
#include "services/FeedbackAPIClient.h"
#include "support/MemoryUserDefaults.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <cstddef>
#include <cstdint>

using namespace kestrant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char*>(bytes), qsizetype(size));
    if (const auto ledger = decodeLedger(text)) {
        const auto again = decodeLedger(encodeLedger(*ledger));
        KESTRANT_REQUIRE(again == ledger);
    }
    (void)metrics::Acknowledgement::fromJson(text);
    (void)FeedbackResponse::fromJson(text);
    (void)ErrorResponse::fromJson(text);

    MemoryUserDefaults defaults;
    const QJsonObject values = QJsonDocument::fromJson(text).object();
    for (auto value = values.begin(); value != values.end(); ++value)
        defaults.set(value.key(), value.value());
    const Preferences preferences(defaults, [] { return QLocale(QLocale::English); });
    KESTRANT_REQUIRE(preferences.isFrench() == (preferences.currentLanguage() == QLatin1String("fr")));
    KESTRANT_REQUIRE(int(preferences.hapticProfile()) >= 0 && int(preferences.hapticProfile()) <= 2);
    KESTRANT_REQUIRE(int(preferences.soundProfile()) >= 0 && int(preferences.soundProfile()) <= 2);
    KESTRANT_REQUIRE(preferences.hoverExpandDelay() == preferences.hoverExpandDelay());
    KESTRANT_REQUIRE(preferences.autoCloseDelay() == preferences.autoCloseDelay());
    return 0;
}
