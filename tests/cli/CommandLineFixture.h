#pragma once

#include "cli/CommandLine.h"
#include "eventkit/model/EventStoreLocation.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/AtomicFile.h"
#include "foundation/Clocks.h"
#include "foundation/CurrentTimeZone.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <optional>

namespace kestrant {

/// What a command answered.
struct Result {
    int status = -1;
    QString out;
    QString err;
    /// Completions that were told to be counted.
    int counted = 0;
    /// The deployment values that were used.
    QString configuration;

    [[nodiscard]] QJsonDocument json() const { return QJsonDocument::fromJson(out.toUtf8()); }
    [[nodiscard]] QStringList ids() const {
        QStringList result;
        for (const QJsonValue task : json().array())
            result.append(task[QLatin1String("id")].toString());
        return result;
    }
};

/// Commands on a real folder; Friday 27 March 2026, noon, in Paris.
class CommandLineFixture : public testing::Test {
  protected:
    [[nodiscard]] QString path(const QString& name) const { return root.filePath(name); }
    [[nodiscard]] QString file(const QString& name) const {
        return QString::fromUtf8(readFile(path(name)).value_or(QByteArray()));
    }
    void put(const QString& name, const QByteArray& content) const {
        ASSERT_TRUE(createFolder(QFileInfo(path(name)).path()).has_value());
        ASSERT_TRUE(writeFileAtomically(path(name), content).has_value());
    }
    void putItem(const QString& list, const QString& uid, const QByteArray& component,
                 const QByteArray& lines) const {
        put(QStringLiteral("store/%1/%2.ics").arg(list, uid),
            "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Test//EN\r\nBEGIN:" + component +
                "\r\nUID:" + uid.toUtf8() + "\r\nDTSTAMP:20260301T080000Z\r\n" + lines + "END:" + component +
                "\r\nEND:VCALENDAR\r\n");
    }
    void putTodo(const QString& list, const QString& uid, const QByteArray& lines) const {
        putItem(list, uid, "VTODO", lines);
    }
    void putEvent(const QString& calendar, const QString& uid, const QByteArray& lines) const {
        putItem(calendar, uid, "VEVENT", lines);
    }

    Result run(const QStringList& arguments) const {
        Result result;
        const CommandLineEnvironment environment{
            .version = QStringLiteral("1.2.3"),
            .storeFolder = path(QStringLiteral("store")),
            .openStore =
                [](const EventStoreLocation& location, Scheduler& scheduler, const Clock& time,
                   const CurrentTimeZone& currentZone, const EventStoreUse&) {
                    return std::make_unique<VdirEventStore>(location.folder, scheduler, time, currentZone);
                },
            .preferencesFile = path(QStringLiteral("preferences.json")),
            .ledgerFile = path(QStringLiteral("ledger.json")),
            .systemLocale = locale,
            .zone = *TimeZone::named("Europe/Paris"),
            .clock = clock,
            .out = [&](const QString& text) { result.out += text; },
            .err = [&](const QString& text) { result.err += text; },
            .readLine = [lines = input]() mutable -> std::optional<QString> {
                return lines.isEmpty() ? std::nullopt : std::optional(lines.takeFirst());
            },
            .lineWidth = lineWidth,
            .useConfiguration = [&](const QString& name) -> tl::expected<void, TextPair> {
                result.configuration = name;
                if (name != QLatin1String("none"))
                    return {};
                return tl::unexpected(text("No file.", "Aucun fichier."));
            },
            .completionsCommitted = [&](int count) { result.counted += count; },
        };
        result.status = runCommandLine(arguments, environment);
        return result;
    }

    int argumentCount = 1;
    char programName[5] = "test";
    char* programArguments[2] = {programName, nullptr};
    QCoreApplication application{argumentCount, programArguments};
    QTemporaryDir root;
    QLocale locale{QLocale::English, QLocale::UnitedKingdom};
    std::optional<int> lineWidth;
    /// The lines of the standard input.
    QStringList input;
    FixedClock clock{parseIso8601(u"2026-03-27T11:00:00Z").value()};
};

}  // namespace kestrant
