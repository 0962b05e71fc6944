#include "eventkit/model/HistoryReferences.h"

#include <utility>

namespace kestrant {

HistoryReferenceRef HistoryReferences::to(const QString& identifier) {
    std::erase_if(references_, [](const auto& entry) { return entry.second.expired(); });
    if (const auto known = references_.find(identifier); known != references_.end())
        return known->second.lock();
    auto reference = std::make_shared<Reference>(Reference{identifier});
    if (!identifier.isEmpty())
        references_[identifier] = reference;
    return reference;
}

QString HistoryReferences::current(const QString& identifier) const {
    const auto found = references_.find(identifier);
    const auto reference = found == references_.end() ? nullptr : found->second.lock();
    return reference ? reference->identifier : identifier;
}

QString HistoryReferences::follow(const HistoryReferenceRef& reference, const QString& identifier) {
    QString former = std::exchange(reference->identifier, identifier);
    if (former != identifier)
        references_[identifier] = reference;
    return former;
}

}  // namespace kestrant
