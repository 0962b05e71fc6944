// Answers of services: however the bytes of an answer are cut, the result is the same, and no more is kept
// than was allowed. The first byte is where they are cut and what is allowed.

#include "fuzzing.h"
#include "metrics/ReportMessages.h"
#include "network/HttpAnswer.h"
#include "network/HttpDate.h"
#include "services/FeedbackAPIClient.h"

#include <QByteArray>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>

using namespace kestrant;

namespace {

HttpResult read(const QByteArray& bytes, qsizetype piece, qint64 limit) {
    HttpAnswerReader reader(limit);
    std::optional<HttpResult> result;
    for (qsizetype at = 0; at < bytes.size() && !result; at += piece) {
        result = reader.take(QByteArrayView(bytes).sliced(at, std::min(piece, bytes.size() - at)));
        KESTRANT_REQUIRE(reader.received() <= limit);
    }
    return result ? *result : reader.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 1)
        return 0;
    const QByteArray answer(reinterpret_cast<const char*>(bytes) + 1, qsizetype(size) - 1);
    const qsizetype piece = 1 + bytes[0] % 16;
    const qint64 limit = bytes[0] < 128 ? 65'536 : 40 + bytes[0];
    const HttpResult whole = read(answer, std::max<qsizetype>(answer.size(), 1), limit);
    KESTRANT_REQUIRE(read(answer, piece, limit) == whole);
    if (!whole) {
        KESTRANT_REQUIRE(!whole.error().description.isEmpty());
        return 0;
    }
    KESTRANT_REQUIRE(whole->status >= 200 && whole->status <= 999);
    KESTRANT_REQUIRE(!whole->body || whole->body->size() <= limit);
    const Instant now{std::chrono::seconds(1'780'000'000)};
    if (const auto date = httpDate(whole->retryAfter, now))
        KESTRANT_REQUIRE(!toIso8601(*date).isEmpty());
    if (const auto acknowledgement = metrics::Acknowledgement::fromJson(whole->body.value_or(QByteArray())))
        KESTRANT_REQUIRE(acknowledgement->count >= 0);
    (void)FeedbackResponse::fromJson(whole->body.value_or(QByteArray()));
    (void)ErrorResponse::fromJson(whole->body.value_or(QByteArray()));
    return 0;
}
