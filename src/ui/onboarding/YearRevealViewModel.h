#pragma once

#include "completion/CompletionLedger.h"
#include "foundation/Instant.h"
#include "foundation/Subscription.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <array>
#include <vector>

namespace kestrant {

class Clock;
class CompletionLedgerRepository;
class CurrentTimeZone;
class Localizer;
class NotchInteractionModel;
class Preferences;
class TimeZone;

/// How many reminders were completed in each month of a year, January first.
[[nodiscard]] std::array<int, 12> completionsByMonth(const std::vector<CompletionRecord>& records, int year,
                                                     const TimeZone& zone);

/// The look at the year's completed reminders that plays once, when the panel first opens after the
/// introduction. It holds the panel open until it ends or is skipped. Thread: main.
class YearRevealViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isShowing READ isShowing NOTIFY isShowingChanged)
    Q_PROPERTY(int total READ total NOTIFY changed)
    /// Above and below the total; without completions a greeting.
    Q_PROPERTY(QString heading READ heading NOTIFY changed)
    Q_PROPERTY(QString caption READ caption NOTIFY changed)
    /// All of it in one sentence, for screen readers.
    Q_PROPERTY(QString summary READ summary NOTIFY changed)
    /// {initial, count, share, isCurrent} each, January first; the share is of the fullest month's count.
    Q_PROPERTY(QVariantList months READ months NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    YearRevealViewModel(NotchInteractionModel& interaction, CompletionLedgerRepository& ledger,
                        Preferences& preferences, const Clock& clock, const CurrentTimeZone& currentZone,
                        Localizer& localizer, QObject* parent = nullptr);

    [[nodiscard]] bool isShowing() const;
    [[nodiscard]] int total() const;
    [[nodiscard]] QString heading() const;
    [[nodiscard]] QString caption() const;
    [[nodiscard]] QString summary() const;
    [[nodiscard]] QVariantList months() const;

    /// The end of the reveal, or its being skipped; it is not shown again.
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
    int year_ = 0;
    int currentMonth_ = 0;
    std::array<int, 12> counts_{};
    Subscription subscription_;
};

}  // namespace kestrant
