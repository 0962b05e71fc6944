#pragma once

#include "ModelSteps.h"
#include "ModelValues.h"

#include <map>
#include <optional>
#include <set>
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
    struct Difference {
        std::optional<Values> before;
        std::optional<Values> after;
    };
    /// What a change did, for taking it back.
    struct Record {
        EKSaveResult result;
        std::map<EventKey, Difference> occurrences;
        /// An event was made or removed with all of its occurrences.
        bool isWhole = false;
        /// How often dates were left out of its series, or came back, by then.
        int exclusions = 0;
    };

    InHand pick(unsigned which);
    void add(const Step& step);
    QString save(const InHand& hand);
    QString remove(const InHand& hand);
    QString removeSeries(const QString& identifier);
    QString takeWith(const Step& step, const InHand& hand);
    void keep(const EKSaveResult& result, Record record);
    /// Whether the model says what taking back comes to: not where an occurrence is concerned that somebody
    /// has removed or changed since, or the dates that are left out.
    [[nodiscard]] bool isCertain(const Record& record) const;
    Code takenBackInModel(const Record& record);
    QString takeBack(unsigned which);
    [[nodiscard]] std::size_t countOf(const QString& identifier) const;
    /// The event goes by another identifier from now on.
    void identifierBecame(const QString& former, const QString& identifier);

    World& world_;
    std::map<EventKey, Values> events_;
    /// Also those of which no occurrence is left.
    std::set<QString> identifiers_;
    std::map<QString, int> exclusions_;
    std::vector<Record> records_;
    InHand inHand_{};
};

}  // namespace kestrant::model
