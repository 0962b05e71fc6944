#include "recap/RecapShareLinks.h"

#include "preferences/PreferenceKeys.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <tuple>

namespace kestrant {
namespace {

constexpr std::size_t mostLinks = 100;
const QString linkKey = QStringLiteral("link");
const QString madeKey = QStringLiteral("made");

}  // namespace

std::vector<MadeShareLink> RecapShareLinks::links() const {
    std::vector<MadeShareLink> links;
    for (const QJsonValue& entry : defaults_.object(preferenceKeys::recapShareLinks).toArray()) {
        const QUrl link(entry[linkKey].toString(), QUrl::StrictMode);
        if (link.isValid() && !link.isEmpty() && entry[madeKey].isDouble())
            links.push_back({link, instantFromSecondsSinceReferenceDate(entry[madeKey].toDouble())});
    }
    std::ranges::stable_sort(links, std::greater(), &MadeShareLink::made);
    return links;
}

void RecapShareLinks::remember(const QUrl& link, Instant now) {
    std::vector<MadeShareLink> kept = links();
    std::erase_if(kept, [&](const MadeShareLink& made) { return made.link == link; });
    kept.insert(kept.begin(), {link, now});
    kept.resize(std::min(kept.size(), mostLinks));
    store(kept);
}

void RecapShareLinks::forget(const QUrl& link) {
    std::vector<MadeShareLink> kept = links();
    if (std::erase_if(kept, [&](const MadeShareLink& made) { return made.link == link; }) > 0)
        store(kept);
}

void RecapShareLinks::forgetAll() {
    defaults_.remove(preferenceKeys::recapShareLinks);
}

void RecapShareLinks::store(const std::vector<MadeShareLink>& links) {
    if (links.empty()) {
        forgetAll();
        return;
    }
    QJsonArray entries;
    for (const MadeShareLink& made : links)
        entries.append(QJsonObject{{linkKey, made.link.toString(QUrl::FullyEncoded)},
                                   {madeKey, secondsSinceReferenceDate(made.made)}});
    defaults_.set(preferenceKeys::recapShareLinks, entries);
}

}  // namespace kestrant
