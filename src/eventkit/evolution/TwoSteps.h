#pragma once

#include "eventkit/items/Journal.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace kestrant::evolution {

/// A change in two steps that is under way on the thread that has begun it, noted in a file until it has come
/// to its end. Where the second step failed and the first one could not be taken back, the note stays.
class TwoSteps {
  public:
    /// `stays` is told of a note that stays when this ends.
    TwoSteps(items::Journal journal, std::function<void(const QString& path, const QByteArray& list)> stays);
    TwoSteps(const TwoSteps&) = delete;
    TwoSteps& operator=(const TwoSteps&) = delete;
    ~TwoSteps();

    /// That of the calling thread, a new one where there is none.
    [[nodiscard]] static std::shared_ptr<TwoSteps>
    begin(items::Journal journal, std::function<void(const QString& path, const QByteArray& list)> stays);
    /// Null where there is none.
    [[nodiscard]] static std::shared_ptr<TwoSteps> current();

    /// An item is about to be made (without text), or was made.
    void noteMade(const items::FileLocation& location, const QByteArray& text = {});
    /// An item was rewritten or removed.
    void noteChanged(const items::FileLocation& location);
    /// An item is gone, or was not made.
    void noteRemoved(const items::FileLocation& location);

  private:
    items::Journal journal_;
    std::function<void(const QString& path, const QByteArray& list)> stays_;
    QString path_;
    bool isDone_ = false;
};

/// The notes that processes have left which are gone, and those in `own`, by their paths.
[[nodiscard]] std::vector<std::pair<QString, items::Journal>> unfinishedChanges(const std::set<QString>& own);

/// digestOf() the text of an item without the version that its server gives it.
[[nodiscard]] QByteArray contentDigest(const QByteArray& text);

}  // namespace kestrant::evolution
