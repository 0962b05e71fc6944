#pragma once

#include "foundation/Subscription.h"
#include "ui/recap/RecapCard.h"

#include <QLocale>
#include <QObject>
#include <QQmlEngine>
#include <QString>

#include <functional>

namespace kestrant {

class Clock;
class CompletionLedgerRepository;
class CurrentTimeZone;
class Localizer;
class NotchInteractionModel;
class Preferences;

/// The look at the year's completed reminders that plays once, when the panel first opens after the
/// introduction. It holds the panel open until it is dismissed; once it has played to its end, it is not
/// shown again, however it goes. Thread: main.
class YearRevealViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isShowing READ isShowing NOTIFY isShowingChanged)
    /// The year, with its map.
    Q_PROPERTY(kestrant::RecapCard card READ card NOTIFY changed)
    Q_PROPERTY(int total READ total NOTIFY changed)
    /// Above and below the total; without completions a greeting.
    Q_PROPERTY(QString heading READ heading NOTIFY changed)
    Q_PROPERTY(QString caption READ caption NOTIFY changed)
    /// All of it in one sentence, for screen readers.
    Q_PROPERTY(QString summary READ summary NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    YearRevealViewModel(NotchInteractionModel& interaction, CompletionLedgerRepository& ledger,
                        Preferences& preferences, const Clock& clock, const CurrentTimeZone& currentZone,
                        Localizer& localizer, std::function<QLocale()> locale, QObject* parent = nullptr);

    [[nodiscard]] bool isShowing() const;
    [[nodiscard]] const RecapCard& card() const { return card_; }
    [[nodiscard]] int total() const { return card_.count(); }
    [[nodiscard]] QString heading() const;
    [[nodiscard]] QString caption() const;
    [[nodiscard]] QString summary() const;

    /// It has played to its end.
    Q_INVOKABLE void noteSeen();
    /// It was dismissed, or skipped; it is not shown again.
    Q_INVOKABLE void finish();

  Q_SIGNALS:
    void isShowingChanged();
    void changed();

  private:
    void count();

    NotchInteractionModel& interaction_;
    CompletionLedgerRepository& ledger_;
    Preferences& preferences_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    /// Says on which day weeks begin.
    std::function<QLocale()> locale_;
    RecapCard card_;
    Subscription subscription_;
};

}  // namespace kestrant
