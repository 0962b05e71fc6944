#pragma once

#include "foundation/ObserverList.h"
#include "foundation/Scheduler.h"
#include "foundation/Text.h"
#include "foundation/UserDefaults.h"

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace kestrant {

/// User defaults in a JSON file that several processes may share. Values are read from memory; changes are
/// written by a thread of its own, several at a time, and at the latest when the store goes. Before writing,
/// with other processes locked out, the file is read again and only the keys changed here are changed there
/// (of an object, its members), so keys nobody here knows and changes by others survive, also by programs
/// that do not lock the file. Changes by others are taken over when they happen.
///
/// A file that holds no JSON object is left as it is until something is to be written. It is set aside then
/// unless it holds one within half a second.
class JsonFileUserDefaults final : public UserDefaults {
  public:
    /// Reads the file; it and its folder need not exist. The scheduler is that of the calling thread and
    /// outlives the store.
    JsonFileUserDefaults(QString path, Scheduler& scheduler);
    JsonFileUserDefaults(const JsonFileUserDefaults&) = delete;
    JsonFileUserDefaults& operator=(const JsonFileUserDefaults&) = delete;
    ~JsonFileUserDefaults() override;

    [[nodiscard]] QJsonValue object(const QString& key) const override;
    void set(const QString& key, const QJsonValue& value) override;
    [[nodiscard]] Subscription observe(std::function<void(const QString& key)> observer) override;

    /// Writes what has not been written. False when that failed; it is then tried again with the next change.
    /// Blocks for the disk, and up to five seconds for another process. Thread: any.
    bool flush();

    /// The problem with reading or saving the settings, in a sentence that names the file; absent while all
    /// is well. Thread: any.
    [[nodiscard]] std::optional<TextPair> problem() const;
    /// Told on the store's own thread after problem() has changed.
    [[nodiscard]] Subscription observeProblem(std::function<void()> observer);

  private:
    class Event;

    void run();
    void takeOverFile();
    /// Takes over the values of all keys that wait for no write here, and has the observers told.
    void adopt(const QJsonObject& values);
    void tell(const QStringList& keys);
    void setProblem(std::optional<TextPair> problem);

    const QString path_;
    Scheduler& scheduler_;
    const std::thread::id ownThread_;

    mutable std::mutex mutex_;
    QJsonObject values_;
    /// The keys changed here since they were last written, with the values they had before.
    QHash<QString, QJsonValue> unwritten_;
    std::optional<TextPair> problem_;

    /// Held while the file is read or written, before `mutex_`.
    std::mutex fileMutex_;

    ObserverList<QString> observers_;
    ObserverList<> problemObservers_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);

    std::unique_ptr<Event> changed_;
    std::unique_ptr<Event> stopped_;
    std::thread thread_;
};

}  // namespace kestrant
