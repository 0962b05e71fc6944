#pragma once

#include "ModelSteps.h"
#include "ModelValues.h"

#include <map>
#include <vector>

namespace kestrant::model {

/// The events as they have to be, and the steps that change them; as ModelReminders.
class ModelEvents {
  public:
    explicit ModelEvents(World& world) : world_(world) {}

    QString take(const Step& step);
    void takeByOthers(const Step& step);
    /// What the store shows.
    [[nodiscard]] std::vector<EKEventRef> shown();
    [[nodiscard]] const std::map<EventKey, Values>& byKey() const { return events_; }

  private:
    struct InHand {
        EKEventRef event;
        EventKey key;
    };

    InHand pick(unsigned which);
    void add(const Step& step);
    QString save(const InHand& hand);
    QString remove(const InHand& hand);
    QString removeSeries(const QString& identifier);
    QString takeWith(const Step& step, const InHand& hand);

    World& world_;
    std::map<EventKey, Values> events_;
    InHand inHand_{};
};

}  // namespace kestrant::model
