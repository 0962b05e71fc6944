#pragma once

#include "foundation/Text.h"
#include "recap/Recap.h"

#include <QDate>
#include <QLocale>
#include <QMetaType>
#include <QObject>
#include <QQmlEngine>
#include <QString>

#include <array>

namespace kestrant {

/// Everything that one card of the recap shows. A value.
struct RecapCard {
    Q_GADGET
    QML_VALUE_TYPE(recapCard)
    Q_PROPERTY(QString kind READ kind CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString label MEMBER label CONSTANT)
    Q_PROPERTY(int count READ count CONSTANT)
    Q_PROPERTY(QString number MEMBER number CONSTANT)
    Q_PROPERTY(QString caption MEMBER caption CONSTANT)
    Q_PROPERTY(QString sentence MEMBER sentence CONSTANT)
    Q_PROPERTY(QString detail MEMBER detail CONSTANT)
    Q_PROPERTY(QString spokenText READ spokenText CONSTANT)
    Q_PROPERTY(int days READ days CONSTANT)
    Q_PROPERTY(int todayIndex READ todayIndex CONSTANT)

  public:
    static constexpr std::size_t halfHoursOfDay = 48;

    /// "day", "week", "month" or "year".
    [[nodiscard]] QString kind() const;
    [[nodiscard]] int count() const { return recap.completed; }
    [[nodiscard]] int days() const { return recap.period.dayCount(); }
    /// -1 in a period without the present day.
    [[nodiscard]] int todayIndex() const;
    /// Title, number and sentences in words, for assistive technology.
    [[nodiscard]] QString spokenText() const;
    /// The same to be passed on as text.
    [[nodiscard]] QString plainText() const;

    Recap recap;
    QDate today;
    Qt::DayOfWeek firstDayOfWeek = Qt::Monday;
    /// Names days and months.
    QLocale dates;
    /// Of a day: completions by half hours of the clock.
    std::array<int, halfHoursOfDay> halfHours{};

    /// "This week", and by its dates "16 – 22 Nov".
    QString title;
    QString label;
    /// The number as it is written, and what it counts: "reminders completed".
    QString number;
    QString caption;
    /// What goes with the number, in sentences without full stops; either may be empty.
    QString sentence;
    QString detail;
};

/// The card of a period, without the half hours.
[[nodiscard]] RecapCard recapCard(const Recap& recap, QDate today, Qt::DayOfWeek firstDayOfWeek,
                                  Language language, const QLocale& dates);

}  // namespace kestrant

Q_DECLARE_METATYPE(kestrant::RecapCard)
