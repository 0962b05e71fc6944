#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace kestrant {

/// What was written in a form that went before it was saved, for when the same item is edited again.
template <typename Values>
class FormDraft {
  public:
    /// Keeps what was written over the values that the form began with, in place of any other draft; nothing
    /// when nothing was changed.
    void keep(const QString& id, const Values& before, Values written) {
        if (written != before)
            kept_ = Kept{id, before, std::move(written)};
    }
    void discard() { kept_.reset(); }
    /// What was written about an item, as long as it is what it was then.
    [[nodiscard]] std::optional<Values> writtenOver(const QString& id, const Values& present) const {
        if (!kept_ || kept_->id != id || kept_->before != present)
            return std::nullopt;
        return kept_->written;
    }

  private:
    struct Kept {
        QString id;
        Values before;
        Values written;
    };
    std::optional<Kept> kept_;
};

}  // namespace kestrant
