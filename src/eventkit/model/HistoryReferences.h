#pragma once

#include <QString>

#include <map>
#include <memory>

namespace kestrant {

/// What recorded changes call an item by: undoing a removal may bring it back under another identifier, which
/// everybody who holds its reference then knows. Thread: one.
class HistoryReferences {
  public:
    struct Reference {
        QString identifier;
    };

    /// The reference of an item, shared by all that ask for the same identifier. An empty identifier is that
    /// of an item that is yet to be created.
    [[nodiscard]] std::shared_ptr<Reference> to(const QString& identifier);
    /// The item's present identifier.
    [[nodiscard]] QString current(const QString& identifier) const;
    /// The item has this identifier from now on. Gives the former one.
    QString follow(const std::shared_ptr<Reference>& reference, const QString& identifier);

  private:
    /// Keyed by every identifier that an item has had.
    std::map<QString, std::weak_ptr<Reference>> references_;
};

using HistoryReferenceRef = std::shared_ptr<HistoryReferences::Reference>;

}  // namespace kestrant
