#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <libecal/libecal.h>
#include <sys/types.h>

#include <vector>

namespace kestrant {

/// A CalDAV server on this machine, with collections of items that are files, and accounts of the desktop
/// that use it.
class CalDavServer {
  public:
    [[nodiscard]] static bool isInstalled();
    CalDavServer();
    CalDavServer(const CalDavServer&) = delete;
    CalDavServer& operator=(const CalDavServer&) = delete;
    ~CalDavServer();

    /// Returns when it answers.
    void start();
    void stop();
    /// Takes requests and answers none, until resume().
    void pause();
    void resume();

    /// Lets nobody write any more.
    void makeReadOnly();

    /// Makes a collection for components of this name; "tasks" and "events" are there from the start.
    void makeCollection(const QString& name, const QByteArray& component);

    void put(const QString& collection, const QString& name, const QByteArray& text);
    void remove(const QString& collection, const QString& name);
    /// Empty where there is no such item.
    [[nodiscard]] QByteArray text(const QString& collection, const QString& name) const;
    /// Those of all items, in no particular order.
    [[nodiscard]] std::vector<QByteArray> texts(const QString& collection) const;
    /// The item in which this text is.
    [[nodiscard]] QByteArray textWith(const QString& collection, const QByteArray& part) const;

    /// Adds a collection to the lists of the desktop; returns its identifier there.
    QString addAccount(const QString& collection, const QString& title, ECalClientSourceType type);
    /// Asks the desktop to look at what is on the server.
    void refresh();

  private:
    void allow(const QByteArray& permissions);
    [[nodiscard]] QString pathOf(const QString& collection, const QString& name) const;

    QTemporaryDir folder_;
    quint16 port_ = 0;
    pid_t process_ = 0;
    std::vector<std::pair<QString, ECalClientSourceType>> accounts_;
};

}  // namespace kestrant
