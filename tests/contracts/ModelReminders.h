#pragma once

#include "ModelSteps.h"
#include "ModelValues.h"

#include <map>
#include <optional>
#include <vector>

namespace kestrant::model {

/// The reminders as they have to be, and the steps that change them: each is taken on the database and here,
/// and the answers are compared. A step's result says what was wrong with the answer, if anything.
class ModelReminders {
  public:
    explicit ModelReminders(World& world) : world_(world) {}

    QString take(const Step& step);
    void takeByOthers(const Step& step);
    /// What others have moved has been noticed.
    void settled() { moved_.clear(); }
    /// The values of all, by identifier.
    [[nodiscard]] std::map<QString, Values> byIdentifier() const;
    /// The values of the property that only others know, by identifier.
    [[nodiscard]] std::map<QString, QString> unknown() const;

  private:
    struct Item {
        QString identifier;
        Values values;
    };
    /// What a change did to one item, for taking it back. Without `before` it was made, without `after`
    /// removed.
    struct ItemRecord {
        int number;
        /// What the item was called then.
        QString identifier;
        std::optional<Values> before;
        std::optional<Values> after;
    };
    struct Record {
        EKSaveResult result;
        std::vector<ItemRecord> items;
    };
    struct InHand {
        EKReminderRef reminder;
        int number;
    };

    /// An item of the model that the store shows; empty where there is none.
    InHand pick(unsigned which);
    int addToModel(const QString& identifier, const Values& values);
    void keep(const EKSaveResult& result, Record record);
    [[nodiscard]] bool isMovedUnnoticed(int number) const;
    /// The answer to what is asked of the database about an item. In an interrupted step others change the
    /// item once the database has read it, which comes to the same as if they had done so before.
    template <typename Ask>
    auto answerOf(int number, const Ask& ask);
    void identifierBecame(int number, const QString& identifier);
    /// With another priority and a property that only others know, or as it is where that is 0.
    void rewriteByOthers(int number, unsigned priority);

    QString add(const Step& step);
    QString save(const InHand& hand);
    QString saveMany(const Step& step);
    QString remove(const InHand& hand);
    QString takeBack(unsigned which);
    QString takeWithItem(const Step& step, const InHand& hand);
    void takeItemByOthers(const Step& step, int number, Item& item);

    /// What saving has to come to: the model's values change, or the reason why not.
    Code savedInModel(int number, const Values& base, const Values& edited, Record& record,
                      std::optional<Values>& copy);
    /// Compares what the database answered to a save with what the model says.
    QString judge(const InHand& hand, const Values& base, const Values& edited,
                  const EventStoreDriver::SaveAnswer& answer);
    /// What taking back has to come to.
    Code takenBackInModel(const Record& record, Record& reverse);

    World& world_;
    std::map<int, Item> items_;
    std::vector<Record> records_;
    InHand inHand_{};
    /// What others write in the interrupted step that is under way, or 0.
    unsigned interruption_ = 0;
    int nextNumber_ = 0;
    std::vector<int> moved_;
};

}  // namespace kestrant::model
