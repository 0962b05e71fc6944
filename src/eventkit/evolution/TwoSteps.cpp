#include "eventkit/evolution/TwoSteps.h"

#include "eventkit/evolution/ServiceText.h"
#include "foundation/AtomicFile.h"
#include "foundation/StandardFolders.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace kestrant::evolution {

using items::FileLocation;
using items::Journal;

namespace {

thread_local std::weak_ptr<TwoSteps> underWay;

QString folderOfNotes() {
    return applicationSupportFolder() + QStringLiteral("/changes");
}

}  // namespace

TwoSteps::TwoSteps(Journal journal, std::function<void(const QString& path, const QByteArray& list)> stays)
    : journal_(std::move(journal))
    , stays_(std::move(stays))
    , path_(folderOfNotes() + u'/' + QString::fromLatin1(items::newJournalName())) {}

TwoSteps::~TwoSteps() {
    if (isDone_ || journal_.made.empty())
        QFile::remove(path_);
    else
        stays_(path_, journal_.changed.collection);
}

std::shared_ptr<TwoSteps>
TwoSteps::begin(Journal journal, std::function<void(const QString& path, const QByteArray& list)> stays) {
    auto steps = underWay.lock();
    if (!steps) {
        steps = std::make_shared<TwoSteps>(std::move(journal), std::move(stays));
        underWay = steps;
    }
    return steps;
}

std::shared_ptr<TwoSteps> TwoSteps::current() {
    return underWay.lock();
}

void TwoSteps::noteMade(const FileLocation& location, const QByteArray& text) {
    std::erase_if(journal_.made, [&](const Journal::Made& made) { return made.location == location; });
    journal_.made.push_back({location, text.isEmpty() ? QByteArray() : contentDigest(text)});
    // Without a place for the note the change is made all the same.
    if (createFolder(folderOfNotes()))
        (void)writeFileAtomically(path_, journal_.text());
}

void TwoSteps::noteChanged(const FileLocation& location) {
    isDone_ = isDone_ || location == journal_.changed;
}

void TwoSteps::noteRemoved(const FileLocation& location) {
    noteChanged(location);
    std::erase_if(journal_.made, [&](const Journal::Made& made) { return made.location == location; });
}

std::vector<std::pair<QString, Journal>> unfinishedChanges(const std::set<QString>& own) {
    std::vector<std::pair<QString, Journal>> result;
    const QDir folder(folderOfNotes());
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden)) {
        const QByteArray file = QFile::encodeName(name);
        const QString path = folder.filePath(name);
        if (!items::isJournalName(file) || (items::isOfRunningProcess(file) && !own.contains(path)))
            continue;
        const auto text = readFile(path);
        if (auto journal = text ? Journal::parse(*text) : std::nullopt)
            result.emplace_back(path, std::move(*journal));
    }
    return result;
}

QByteArray contentDigest(const QByteArray& text) {
    return items::digestOf(withoutServerVersion(text));
}

}  // namespace kestrant::evolution
