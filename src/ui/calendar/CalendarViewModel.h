#pragma once

#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "foundation/TimeZone.h"
#include "ui/calendar/CalendarRowModel.h"
#include "ui/calendar/CalendarRowTexts.h"
#include "ui/panel/RestingViewModel.h"

#include <QLocale>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariant>
#include <QVariantList>

#include <functional>
#include <optional>

namespace kestrant {

class CalendarStore;
class Localizer;
class PanelViewModel;

/// The calendar module: its rows, what stands in their place when there are none, and the way through the
/// full calendar. Also tells the panel when the next event begins. Thread: main.
class CalendarViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    Q_PROPERTY(kestrant::CalendarRowModel* rows READ rows CONSTANT)
    /// The state of the module: "rows", "requesting", "loading", "empty", "denied", "restricted" or "failed".
    Q_PROPERTY(QString content READ content NOTIFY contentChanged)
    /// The reason, for "failed".
    Q_PROPERTY(QString failureText READ failureText NOTIFY contentChanged)
    /// "2026-11-21".
    Q_PROPERTY(QString today READ today NOTIFY weekChanged)
    /// The seven days from today on, each {day, name, number, isToday, colors}: a colour for each of its
    /// items, at most four.
    Q_PROPERTY(QVariantList week READ week NOTIFY weekChanged)

    /// The full calendar rather than the coming week.
    Q_PROPERTY(bool showsAllEvents READ showsAllEvents WRITE setShowsAllEvents NOTIFY showsAllEventsChanged)
    /// A load or an extension is under way.
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    /// Days further that way are loaded only when the person asks for them.
    Q_PROPERTY(bool needsManualLoadEarlier READ needsManualLoadEarlier NOTIFY needsManualLoadChanged)
    Q_PROPERTY(bool needsManualLoadLater READ needsManualLoadLater NOTIFY needsManualLoadChanged)
    /// That not everything could be shown; empty where it is.
    Q_PROPERTY(QString shortageText READ shortageText NOTIFY shortageChanged)

  public:
    /// Everything must outlive the view model. `personalLocale` says whether the day has 12 or 24 hours.
    CalendarViewModel(CalendarStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                      Localizer& localizer, PanelViewModel& panel, std::function<QLocale()> personalLocale,
                      QObject* parent = nullptr);

    [[nodiscard]] CalendarRowModel* rows() { return &rows_; }
    [[nodiscard]] const QString& content() const { return content_; }
    [[nodiscard]] QString failureText() const;
    [[nodiscard]] QString today() const;
    [[nodiscard]] QVariantList week() const;
    [[nodiscard]] bool showsAllEvents() const;
    void setShowsAllEvents(bool all);
    [[nodiscard]] bool isLoading() const;
    [[nodiscard]] bool needsManualLoadEarlier() const;
    [[nodiscard]] bool needsManualLoadLater() const;
    [[nodiscard]] QString shortageText() const;

    /// The item of a row as a CalendarEventItem, for whoever edits it; invalid for the heading of a day.
    [[nodiscard]] Q_INVOKABLE QVariant row(int index) const;
    /// Extends the full calendar.
    Q_INVOKABLE void loadMore(bool earlier);
    /// Updates what depends on the minute.
    Q_INVOKABLE void refreshPresent();
    /// Tries again to open the database.
    Q_INVOKABLE void retry();
    Q_INVOKABLE void openPrivacyPage() { Q_EMIT privacyPageRequested(); }

  Q_SIGNALS:
    void contentChanged();
    void weekChanged();
    void showsAllEventsChanged();
    void isLoadingChanged();
    void needsManualLoadChanged();
    void shortageChanged();
    /// The person wants to allow access; the application opens the place where that is done.
    void privacyPageRequested();

  private:
    void groupsChanged();
    void updateContent();
    void updateNextEvent();
    [[nodiscard]] std::optional<RestingEvent> restingEvent() const;
    [[nodiscard]] QString computedContent() const;
    [[nodiscard]] TimeStyle style() const;
    [[nodiscard]] CalendarRow presented(const CalendarDayGroup& group, int event) const;

    CalendarStore& store_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    PanelViewModel& panel_;
    std::function<QLocale()> personalLocale_;
    CalendarRowModel rows_;
    QString content_ = QStringLiteral("loading");
    /// The language and formats that the texts were made for.
    TimeZone shownZone_;
};

}  // namespace kestrant
