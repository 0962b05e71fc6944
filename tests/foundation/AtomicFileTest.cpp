#include "foundation/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>

namespace kestrant {
namespace {

class AtomicFile : public testing::Test {
  protected:
    [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    [[nodiscard]] QStringList entries() const {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
    void put(const char* name, const QByteArray& content) const {
        ASSERT_TRUE(writeFileAtomically(path(name), content).has_value());
    }

    QTemporaryDir folder;
};

TEST_F(AtomicFile, HoldsWhatWasWrittenAndNothingElseStaysInTheFolder) {
    for (const QByteArray& content : {QByteArray("one"), QByteArray(), QByteArray(300'000, 'x')}) {
        put("file", content);
        EXPECT_EQ(readFile(path("file")).value(), content);
        EXPECT_EQ(entries(), QStringList{"file"});
    }
}

TEST_F(AtomicFile, KeepsThePermissionsOfTheFileItReplaces) {
    put("file", "one");
    ASSERT_EQ(::chmod(qPrintable(path("file")), 0640), 0);
    put("file", "two");
    struct stat status = {};
    ASSERT_EQ(::stat(qPrintable(path("file")), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST_F(AtomicFile, ReplacesWhatALinkLeadsToAndKeepsTheLink) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("elsewhere"));
    put("elsewhere/file", "one");
    ASSERT_TRUE(QFile::link(path("elsewhere/file"), path("link")));
    put("link", "two");
    EXPECT_EQ(readFile(path("elsewhere/file")).value(), "two");
    EXPECT_TRUE(QFileInfo(path("link")).isSymLink());
}

TEST_F(AtomicFile, TakesTheLongestNameThereIs) {
    const QByteArray name(255, 'n');
    put(name.constData(), "content");
    EXPECT_EQ(entries(), QStringList{QString::fromLatin1(name)});
}

TEST_F(AtomicFile, CreatedAsNewDoesNotReplace) {
    ASSERT_TRUE(writeFileAtomically(path("file"), "one", FileMode::createNew).has_value());
    const auto second = writeFileAtomically(path("file"), "two", FileMode::createNew);
    ASSERT_FALSE(second.has_value());
    EXPECT_EQ(second.error().errorNumber, EEXIST);
    EXPECT_EQ(readFile(path("file")).value(), "one");
    EXPECT_EQ(entries(), QStringList{"file"});
}

TEST_F(AtomicFile, ThatCannotBeWrittenLeavesTheOldOneAndNothingBehind) {
    put("file", "one");
    // Stands for a full disk: no file may grow beyond this.
    rlimit old = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit small = {.rlim_cur = 1000, .rlim_max = old.rlim_max};
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto written = writeFileAtomically(path("file"), QByteArray(5000, 'x'));
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, previousHandler);

    ASSERT_FALSE(written.has_value());
    EXPECT_EQ(written.error().errorNumber, EFBIG);
    EXPECT_EQ(written.error().path, path("file"));
    EXPECT_FALSE(written.error().description.isEmpty());
    EXPECT_EQ(readFile(path("file")).value(), "one");
    EXPECT_EQ(entries(), QStringList{"file"});
}

TEST_F(AtomicFile, NeedsItsFolder) {
    EXPECT_EQ(writeFileAtomically(path("no/file"), "x").error().errorNumber, ENOENT);
    ASSERT_TRUE(createFolder(path("no/such/folder")).has_value());
    ASSERT_TRUE(createFolder(path("no/such/folder")).has_value());
    EXPECT_TRUE(writeFileAtomically(path("no/such/folder/file"), "x").has_value());
    EXPECT_EQ(createFolder(path("no/such/folder/file")).error().errorNumber, ENOTDIR);
}

TEST_F(AtomicFile, ReadsOnlyFilesAndOnlyUpToTheLimit) {
    put("file", QByteArray(1000, 'x'));
    EXPECT_EQ(readFile(path("file"), 1000)->size(), 1000);
    EXPECT_EQ(readFile(path("file"), 999).error().errorNumber, EFBIG);
    EXPECT_EQ(readFile(path("none")).error().errorNumber, ENOENT);
    EXPECT_EQ(readFile(folder.path()).error().errorNumber, EISDIR);
    ASSERT_EQ(::mkfifo(qPrintable(path("pipe")), 0600), 0);
    EXPECT_EQ(readFile(path("pipe")).error().errorNumber, EINVAL);
    EXPECT_EQ(readFile(QStringLiteral("/proc/self/cmdline"))->contains("foundation_tests"), true)
        << "a file that does not know its size";
}

TEST_F(AtomicFile, SetAsideTakesTheFirstFreeName) {
    put("file.damaged-2", "earlier");
    for (const char* name : {"file.damaged-1", "file.damaged-3"}) {
        put("file", name);
        EXPECT_EQ(setFileAside(path("file")).value(), path(name));
        EXPECT_EQ(readFile(path(name)).value(), name);
    }
    EXPECT_EQ(readFile(path("file.damaged-2")).value(), "earlier");
    EXPECT_EQ(setFileAside(path("file")).error().errorNumber, ENOENT);
}

}  // namespace
}  // namespace kestrant
