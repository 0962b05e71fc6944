#pragma once

#include "foundation/Instant.h"
#include "foundation/UserDefaults.h"

#include <QUrl>

#include <vector>

namespace kestrant {

/// A link to a recap that a person has copied or shown.
struct MadeShareLink {
    QUrl link;
    Instant made;
    bool operator==(const MadeShareLink&) const = default;
};

/// The links to recaps that were made here, so that a person can see and forget them. They are kept in the
/// user defaults as an array of {"link": text, "made": seconds since 2001-01-01 UTC}. Thread: that of the
/// user defaults.
class RecapShareLinks {
  public:
    /// `defaults` must outlive this.
    explicit RecapShareLinks(UserDefaults& defaults) : defaults_(defaults) {}

    /// The newest first.
    [[nodiscard]] std::vector<MadeShareLink> links() const;
    /// A link that was made before counts as made now. Of more than 100 links the oldest are forgotten.
    void remember(const QUrl& link, Instant now);
    void forget(const QUrl& link);
    void forgetAll();

  private:
    void store(const std::vector<MadeShareLink>& links);

    UserDefaults& defaults_;
};

}  // namespace kestrant
