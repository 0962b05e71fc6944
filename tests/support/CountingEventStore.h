#pragma once

#include "eventkit/memory/InMemoryEventStore.h"

namespace kestrant {

/// A database in memory that counts how often its open reminders are fetched.
class CountingEventStore : public InMemoryEventStore {
  public:
    using InMemoryEventStore::InMemoryEventStore;

    void fetchReminders(const EKPredicate& matching, FetchCompletion completion) override {
        if (matching.kind == EKPredicate::Kind::incompleteReminders)
            ++openFetches;
        InMemoryEventStore::fetchReminders(matching, std::move(completion));
    }

    int openFetches = 0;
};

}  // namespace kestrant
