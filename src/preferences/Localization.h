#pragma once

#include "foundation/ObserverList.h"
#include "foundation/Text.h"
#include "preferences/Preferences.h"

#include <QLocale>

namespace kestrant {

/// The language in force, followed while the program runs. Thread: main.
class Localization {
  public:
    explicit Localization(const Preferences& preferences);
    Localization(const Localization&) = delete;
    Localization& operator=(const Localization&) = delete;

    [[nodiscard]] Language language() const { return language_; }
    [[nodiscard]] bool isFrench() const { return language_ == Language::french; }
    [[nodiscard]] QLocale dateLocale() const { return preferences_.dateLocale(); }
    [[nodiscard]] ClockHours clockHours() const { return preferences_.clockHours(); }
    [[nodiscard]] const QString& operator()(const TextPair& pair) const { return pair.in(language_); }

    /// Told after the language has changed.
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) {
        return observers_.add(std::move(observer));
    }

  private:
    const Preferences& preferences_;
    Language language_;
    ObserverList<> observers_;
    Subscription subscription_;
};

}  // namespace kestrant
