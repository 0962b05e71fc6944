#pragma once

#include "foundation/Instant.h"

namespace kestrant {

class Clock;
class Preferences;

/// Whether a person is told of something new in the program, as decided from what is kept in the
/// preferences: never to somebody who has just installed it, at most three times until it was seen, once a
/// day at most, and never again after "not again". Thread: main.
class FeatureAnnouncement {
  public:
    static constexpr int mostPresentations = 3;
    static constexpr Duration leastDistance = std::chrono::hours(24);

    /// `released` is the moment of the first version with the feature. Both must outlive the announcement.
    FeatureAnnouncement(Preferences& preferences, const Clock& clock, Instant released);

    /// To be called at every start: the first one is the moment of installation. An installation that was in
    /// use before that was noted counts as older than the feature.
    void noteStart();
    [[nodiscard]] bool isDue() const;
    void notePresented();
    /// The person has seen it, and does not need to see it again.
    void noteSeen();
    /// No announcement any more, of anything.
    void disable();

  private:
    /// How often the present feature was presented: what was presented before it was released was another.
    [[nodiscard]] int presentedCount() const;

    Preferences& preferences_;
    const Clock& clock_;
    double released_;
};

}  // namespace kestrant
