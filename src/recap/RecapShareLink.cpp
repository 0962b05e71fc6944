#include "recap/RecapShareLink.h"

#include "network/ServiceUrl.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>

namespace kestrant {
namespace {

const QDate epoch(1970, 1, 1);
constexpr unsigned version = 1;
constexpr int versionBits = 8;
constexpr int reservedBits = 3;
constexpr int weekdayBits = 3;
constexpr int kindBits = 2;
constexpr int dayBits = 24;
constexpr int lengthBits = 16;
constexpr int widthBits = 8;
constexpr int widestCount = 24;
constexpr int byteBits = 8;

/// Numbers of a given number of bits, one after another from the highest bit of the first byte.
class BitWriter {
  public:
    void write(unsigned value, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit) {
            if (used_ % byteBits == 0)
                bytes_.append('\0');
            const unsigned shifted = ((value >> unsigned(bit)) & 1U)
                                     << unsigned(byteBits - 1 - used_ % byteBits);
            bytes_.back() = char(static_cast<unsigned char>(bytes_.back()) | shifted);
            ++used_;
        }
    }
    [[nodiscard]] const QByteArray& bytes() const { return bytes_; }

  private:
    QByteArray bytes_;
    int used_ = 0;
};

/// Past the end there are zeros.
class BitReader {
  public:
    explicit BitReader(QByteArray bytes) : bytes_(std::move(bytes)) {}

    unsigned read(int bits) {
        unsigned value = 0;
        for (int bit = 0; bit < bits; ++bit, ++used_) {
            const qsizetype index = used_ / byteBits;
            const unsigned byte = index < bytes_.size() ? static_cast<unsigned char>(bytes_[index]) : 0U;
            value = (value << 1U) | ((byte >> unsigned(byteBits - 1 - used_ % byteBits)) & 1U);
        }
        return value;
    }

  private:
    QByteArray bytes_;
    int used_ = 0;
};

constexpr auto linkEncoding = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

}  // namespace

SharedRecap sharedRecap(const Recap& recap, Qt::DayOfWeek firstDayOfWeek) {
    const auto begun = std::span(recap.days).first(std::size_t(recap.elapsedDays));
    return {recap.period, firstDayOfWeek, {begun.begin(), begun.end()}};
}

std::optional<QByteArray> recapFragment(const SharedRecap& recap) {
    const qint64 first = epoch.daysTo(recap.period.first);
    const int most = recap.days.empty() ? 0 : *std::ranges::max_element(recap.days);
    const int width = std::bit_width(unsigned(std::max(0, most)));
    if (first < 0 || first >= (qint64(1) << dayBits) || width > widestCount ||
        std::ranges::any_of(recap.days, [](int count) { return count < 0; }))
        return std::nullopt;
    BitWriter writer;
    writer.write(version, versionBits);
    writer.write(0, reservedBits);
    writer.write(unsigned(recap.firstDayOfWeek), weekdayBits);
    writer.write(unsigned(recap.period.kind), kindBits);
    writer.write(unsigned(first), dayBits);
    writer.write(unsigned(recap.days.size()), lengthBits);
    writer.write(unsigned(width), widthBits);
    for (const int count : recap.days)
        writer.write(unsigned(count), width);
    return writer.bytes().toBase64(linkEncoding);
}

std::optional<SharedRecap> readRecapFragment(QByteArrayView fragment) {
    const auto bytes = QByteArray::fromBase64Encoding(fragment.toByteArray(),
                                                      linkEncoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes)
        return std::nullopt;
    BitReader reader(*bytes);
    if (reader.read(versionBits) != version || reader.read(reservedBits) != 0)
        return std::nullopt;
    const unsigned weekday = reader.read(weekdayBits);
    const auto kind = RecapKind(reader.read(kindBits));
    const QDate first = epoch.addDays(reader.read(dayBits));
    const unsigned length = reader.read(lengthBits);
    const unsigned width = reader.read(widthBits);
    if (weekday == 0 || width > widestCount)
        return std::nullopt;
    SharedRecap recap{periodContaining(kind, first, Qt::DayOfWeek(weekday)), Qt::DayOfWeek(weekday), {}};
    if (recap.period.first != first || length > unsigned(recap.period.dayCount()))
        return std::nullopt;
    for (unsigned day = 0; day < length; ++day)
        recap.days.push_back(int(reader.read(int(width))));
    // What is missing at the end or stands behind it shows in the text that would be written.
    return recapFragment(recap) == fragment ? std::optional(recap) : std::nullopt;
}

std::optional<QUrl> recapShareLink(const QString& baseUrl, const SharedRecap& recap) {
    auto url = protectedServiceUrl(baseUrl);
    const auto fragment = recapFragment(recap);
    if (!url || !fragment)
        return std::nullopt;
    url->setFragment(QString::fromLatin1(*fragment));
    return url;
}

}  // namespace kestrant
