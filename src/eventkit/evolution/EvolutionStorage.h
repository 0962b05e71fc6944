#pragma once

#include "eventkit/evolution/CallTimeout.h"
#include "eventkit/evolution/EvolutionClient.h"
#include "eventkit/evolution/EvolutionLists.h"
#include "eventkit/evolution/Glib.h"
#include "eventkit/evolution/SourceQueues.h"
#include "eventkit/items/ItemStorage.h"
#include "eventkit/items/Journal.h"
#include "eventkit/model/EventStoreLocation.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace kestrant::evolution {

/// The task lists and calendars of the desktop's calendar service: each enabled one is a collection, called
/// by its UID, and each item in it a file, called by its UID. Thread: that of any piece of work whose turn it
/// is, but for making and destroying it; blocks for the service as CallTimeout says.
class EvolutionStorage final : public items::ItemStorage {
  public:
    /// `observer` is called on any thread, until close(). `queues` are those that it is used from, and where
    /// each list is read in the queue of its name; without any all is done by the caller.
    EvolutionStorage(items::StorageObserver observer, std::chrono::milliseconds longest,
                     SourceQueues* queues = nullptr, const EventStoreUse& use = {});
    ~EvolutionStorage() override;

    [[nodiscard]] std::optional<EKError> open() override;
    void prepareToClose() override;
    void close() override;
    [[nodiscard]] bool update(items::StorageContents& contents, const items::Changes& changes,
                              const TimeZone& local) override;
    [[nodiscard]] bool isPartlyRead() const override { return wanted_.has_value(); }
    [[nodiscard]] std::optional<ScheduledCheck> recheck() const override;
    [[nodiscard]] tl::expected<std::optional<items::StoredText>, EKError>
    read(const items::FileLocation& location) override;
    [[nodiscard]] std::optional<EKError> writeRefusal(const items::FileLocation& location) override;
    [[nodiscard]] tl::expected<items::StoredText, items::WriteError>
    replace(const items::FileLocation& location, const icalendar::Document& before,
            const icalendar::Document& after, const items::Version& expected) override;
    [[nodiscard]] std::vector<tl::expected<std::optional<items::StoredText>, EKError>>
    readAll(const std::vector<items::FileLocation>& locations) override;
    [[nodiscard]] std::vector<tl::expected<items::StoredText, items::WriteError>>
    replaceAll(const std::vector<Replacement>& replacements) override;
    [[nodiscard]] std::optional<items::WriteError> remove(const items::FileLocation& location,
                                                          const items::Version& expected) override;
    [[nodiscard]] items::StorageHold beginTwoSteps(const items::FileLocation& changed, const QByteArray& text,
                                                   items::SecondStep step) override;
    [[nodiscard]] tl::expected<Created, EKError> create(const QByteArray& collection, const QByteArray& uid,
                                                        const QByteArray& preferredName,
                                                        const icalendar::Document& document) override;
    [[nodiscard]] tl::expected<QByteArray, EKError> saveCollection(const items::StorageContents& contents,
                                                                   const EKCalendar& calendar) override;

  private:
    /// More items than this of one list are read with all the others.
    static constexpr std::size_t mostReadAlone = 50;

    using Lists = std::map<QByteArray, ServiceList>;
    [[nodiscard]] std::shared_ptr<EvolutionClient> clientFor(const QByteArray& uid, const ServiceList& list,
                                                             TextPair& reason);
    /// Takes lists away that are gone, and sees what the others are called.
    bool updateLists(items::StorageContents& contents, const Lists& lists);
    /// All lists being read at the same time.
    struct Reading {
        std::mutex mutex;
        std::condition_variable changed;
        std::set<QByteArray> awaited;
        /// Those that need no server: what is in them takes the time that it takes.
        std::set<QByteArray> local;
        /// Items that are wanted and have not been found.
        std::set<QByteArray> missing;
        bool hasAnswer = false;
        bool isOver = false;
    };
    /// The result is the lists that did not answer in time.
    [[nodiscard]] std::set<QByteArray> awaitReading(Reading& reading);
    /// Reads all lists, at the same time where there are queues.
    void readAllLists(items::StorageContents& contents, const Lists& lists, const TimeZone& local);
    /// The items of a list: all of them where `named` is null.
    bool readList(items::StorageContents& contents, const QByteArray& uid, const ServiceList& list,
                  const std::set<QByteArray>* named, const TimeZone& local);
    /// Many are read faster with all the others, and after a silence anything may have changed.
    [[nodiscard]] bool needsAll(const QByteArray& uid, const std::set<QByteArray>& named) const;
    /// The list keeps what was seen last, and is asked again later.
    void noteSilence(items::Collection& collection, const QByteArray& uid, const TextPair& reason);
    [[nodiscard]] tl::expected<std::shared_ptr<EvolutionClient>, EKError>
    openClient(const QByteArray& collection);
    [[nodiscard]] tl::expected<items::StoredText, items::WriteError>
    readBack(const items::FileLocation& location);
    /// What became of an item that was being written when a connection was lost. Of that to the service it
    /// waits for the list to answer again, and fails when the program ends before. Of that to the server it
    /// has the service look there, and fails where the item remains as it was `before` (absent if it was not
    /// there) for a while.
    [[nodiscard]] tl::expected<std::optional<items::StoredText>, EKError>
    readOutcome(EvolutionClient& client, const items::FileLocation& location,
                const std::optional<items::Version>& before, const EKError& unknown);
    [[nodiscard]] tl::expected<std::optional<items::StoredText>, EKError>
    readOnceItAnswers(const items::FileLocation& location, const EKError& unknown);
    /// Takes the first step of changes in this list back whose second one was never made.
    void settleUnfinished(const QByteArray& list);
    [[nodiscard]] bool takeBack(const items::Journal& journal);
    /// Says so where the service keeps changes of a list to send them later, and where it does no longer.
    void noteSending(const QByteArray& list, EvolutionClient& client);
    void tellOfUnsent();
    void tellChanged(const items::Changes& changes);
    /// Which of `replacements` were written in one call for each list.
    [[nodiscard]] std::set<std::size_t> writeTogether(const std::vector<Replacement>& replacements);
    /// The item as it is to be changed. Why nothing may be written, where it is gone or is not what it was.
    [[nodiscard]] tl::expected<items::StoredText, items::WriteError>
    readToChange(const items::FileLocation& location, const items::Version& expected);

    /// Told of changes until the end. Thread: any.
    class Listener;

    std::shared_ptr<Listener> listener_;
    CallTimeout limit_;
    SourceQueues* queues_;
    EvolutionLists lists_;
    bool observesChanges_;
    std::map<QByteArray, std::shared_ptr<EvolutionClient>> clients_;
    /// Lists that did not answer, and how often in a row.
    std::map<QByteArray, int> silent_;
    /// Lists that were read after everybody had given up waiting, of which nobody has been told.
    std::set<QByteArray> late_;
    /// Titles of lists whose server has not got what was written.
    std::map<QByteArray, QString> unsent_;
    /// Notes of this process about changes that came to no end.
    std::set<QString> unfinished_;
    bool hasRead_ = false;
    /// The items that are read, while that is enough.
    std::optional<std::set<QByteArray>> wanted_;
};

}  // namespace kestrant::evolution
