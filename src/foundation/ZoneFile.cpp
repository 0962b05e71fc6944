#include "foundation/ZoneFile.h"

#include "foundation/ZoneRule.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

/// Zone data has less than a tenth of it.
constexpr qint64 largestFile = 1'000'000;
constexpr qsizetype headerSize = 44;
/// Between these, in seconds, lies every zone's distance from UTC (RFC 8536, 3.2).
constexpr int westernmost = -89'999;
constexpr int easternmost = 93'599;

/// One of the two blocks of a file: the first has times of 32 bits, the second of 64.
struct Block {
    qsizetype timeSize = 4;
    qsizetype utcIndicators = 0;
    qsizetype standardIndicators = 0;
    qsizetype leapSeconds = 0;
    qsizetype times = 0;
    qsizetype types = 0;
    qsizetype characters = 0;
    /// The counts behind the header.
    QByteArrayView body;
    bool isLast = false;

    [[nodiscard]] qsizetype size() const {
        return times * (timeSize + 1) + types * 6 + characters + leapSeconds * (timeSize + 4) +
               standardIndicators + utcIndicators;
    }
};

std::optional<Block> readBlock(QByteArrayView content, qsizetype timeSize) {
    if (content.size() < headerSize || !content.startsWith("TZif"))
        return std::nullopt;
    Block block{.timeSize = timeSize};
    const char* count = content.data() + 20;
    for (qsizetype* const field : {&block.utcIndicators, &block.standardIndicators, &block.leapSeconds,
                                   &block.times, &block.types, &block.characters}) {
        const auto value = qFromBigEndian<quint32>(count);
        if (value > largestFile)
            return std::nullopt;
        *field = value;
        count += 4;
    }
    block.isLast = timeSize == 8 || content[4] < '2';
    block.body = content.sliced(headerSize);
    return block.types > 0 && block.size() <= block.body.size() ? std::optional(block) : std::nullopt;
}

/// The block that counts, being the second one where there are two.
std::optional<Block> lastBlock(QByteArrayView content) {
    const auto first = readBlock(content, 4);
    if (!first || first->isLast)
        return first;
    return readBlock(first->body.sliced(first->size()), 8);
}

/// A letter, a digit or a sign.
bool isPlainCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '+';
}

ZoneChange typeAt(const Block& block, qsizetype index) {
    const char* const type = block.body.data() + block.times * (block.timeSize + 1) + index * 6;
    const QByteArrayView names =
        block.body.sliced(block.times * (block.timeSize + 1) + block.types * 6, block.characters);
    ZoneChange result{.offset = qFromBigEndian<qint32>(type), .isDaylight = type[4] != 0};
    const auto name = static_cast<qsizetype>(static_cast<unsigned char>(type[5]));
    if (name < names.size()) {
        const QByteArrayView rest = names.sliced(name);
        const QByteArrayView text = rest.first(std::max<qsizetype>(rest.indexOf('\0'), 0));
        // Files hold names such as "CEST" and "+0530" (RFC 8536, 3.2); anything else is left out.
        if (std::ranges::all_of(text, isPlainCharacter))
            result.abbreviation = text.toByteArray();
    }
    return result;
}

bool isPossible(const ZoneChange& change) {
    return change.offset >= westernmost && change.offset <= easternmost;
}

bool isPlainName(const QByteArray& name) {
    const bool isMachines = name == "localtime" || name == "posixrules" || name.size() > 100;
    return !isMachines && !name.isEmpty() && !name.startsWith('/') && !name.contains("..") &&
           std::ranges::all_of(
               name, [](char c) { return isPlainCharacter(c) || c == '/' || c == '_' || c == '.'; });
}

}  // namespace

QStringList zoneFolders() {
    QStringList result{QStringLiteral("/usr/share/zoneinfo"), QStringLiteral("/usr/lib/zoneinfo"),
                       QStringLiteral("/etc/zoneinfo")};
    const QString chosen = QFile::decodeName(qgetenv("TZDIR"));
    if (!chosen.isEmpty())
        result.prepend(chosen);
    return result;
}

std::optional<ZoneChanges> readNamedZone(const QByteArray& name) {
    if (!isPlainName(name))
        return std::nullopt;
    for (const QString& folder : zoneFolders()) {
        if (auto zone = readZoneFile(folder + QLatin1Char('/') + QString::fromLatin1(name)))
            return zone;
    }
    return std::nullopt;
}

std::optional<ZoneChanges> readZoneFile(const QString& path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return parseZoneFile(file.read(largestFile));
}

std::optional<ZoneChanges> parseZoneFile(QByteArrayView content) {
    const auto block = lastBlock(content);
    if (!block)
        return std::nullopt;
    ZoneChanges zone{.before = typeAt(*block, 0)};
    if (!isPossible(zone.before))
        return std::nullopt;
    const char* const times = block->body.data();
    const char* const types = times + block->times * block->timeSize;
    for (qsizetype i = 0; i < block->times; ++i) {
        const auto type = static_cast<qsizetype>(static_cast<unsigned char>(types[i]));
        if (type >= block->types)
            return std::nullopt;
        ZoneChange change = typeAt(*block, type);
        change.at = block->timeSize == 8 ? qFromBigEndian<qint64>(times + i * 8)
                                         : qFromBigEndian<qint32>(times + i * 4);
        if (!isPossible(change) || (!zone.changes.empty() && change.at <= zone.changes.back().at))
            return std::nullopt;
        zone.changes.push_back(std::move(change));
    }
    if (const auto rule = ZoneRule::parse(ruleInZoneFile(content)))
        rule->continueZone(zone);
    return zone;
}

QByteArray ruleInZoneFile(QByteArrayView content) {
    const auto block = lastBlock(content);
    if (!block || block->timeSize != 8)
        return {};
    const QByteArrayView rest = block->body.sliced(block->size());
    const qsizetype end = rest.indexOf('\n', 1);
    return rest.startsWith('\n') && end > 0 ? rest.sliced(1, end - 1).toByteArray() : QByteArray();
}

}  // namespace kestrant
