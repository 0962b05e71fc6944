#include "foundation/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <functional>
#include <optional>

namespace kestrant {
namespace {

class AtomicFile : public testing::Test {
  protected:
    [[nodiscard]] QString path(const QByteArray& name) const {
        return folder.filePath(QString::fromUtf8(name));
    }
    [[nodiscard]] QStringList entries() const {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
    void put(const QByteArray& name, const QByteArray& content) const {
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

TEST_F(AtomicFile, IsItsOwnersAloneWhateverTheMaskAndKeepsThePermissionsItHas) {
    const auto modeOf = [&](const QByteArray& name) {
        struct stat status = {};
        EXPECT_EQ(::stat(qPrintable(path(name)), &status), 0);
        return status.st_mode & 07777;
    };
    for (const mode_t mask : {0000, 0022, 0777}) {
        const mode_t before = ::umask(mask);
        const QByteArray name = QByteArray::number(mask);
        EXPECT_TRUE(createFolder(path(name + "/inner")).has_value());
        put(name + "/inner/file", "one");
        EXPECT_TRUE(createFolderWithFiles(path(name + "/list"), {{"color", "red"}}).has_value());
        ::umask(before);
        for (const char* inner : {"", "/inner", "/list"})
            EXPECT_EQ(modeOf(name + inner), 0700U) << mask << inner;
        for (const char* file : {"/inner/file", "/list/color"})
            EXPECT_EQ(modeOf(name + file), 0600U) << mask << file;
    }
    put("file", "one");
    ASSERT_EQ(::chmod(qPrintable(path("file")), 0640), 0);
    put("file", "two");
    EXPECT_EQ(modeOf("file"), 0640U);
    ASSERT_TRUE(replaceFileIf(path("file"), "three", [](const QString&) { return true; }).has_value());
    EXPECT_EQ(modeOf("file"), 0640U);
}

TEST_F(AtomicFile, IsReplacedOrRemovedOnlyWhileItIsWhatWasExpected) {
    // What another program does to the file before the look at it, or between that and the write.
    const std::function<void()> deeds[] = {
        [] {},
        [&] { put("file", "theirs"); },
        [&] { ASSERT_TRUE(QFile::remove(path("file"))); },
    };
    const std::optional<QByteArray> theirs[] = {"read", "theirs", std::nullopt};
    for (const bool removes : {false, true}) {
        for (std::size_t deed = 0; deed < std::size(deeds); ++deed) {
            for (const bool late : {false, true}) {
                (void)QFile::remove(path("file"));
                put("file", "read");
                int looks = 0;
                if (!late)
                    deeds[deed]();
                const auto isRead = [&](const QString& shown) {
                    const bool result = readFile(shown) == QByteArray("read");
                    if (late && ++looks == 1)
                        deeds[deed]();
                    return result;
                };
                const auto done = removes ? removeFileIf(path("file"), isRead)
                                          : replaceFileIf(path("file"), "ours", isRead);
                EXPECT_EQ(done ? 0 : done.error().errorNumber, deed == 0 ? 0 : ESTALE)
                    << removes << deed << late;
                const auto expected = deed > 0  ? theirs[deed]
                                      : removes ? std::nullopt
                                                : std::optional<QByteArray>("ours");
                const auto left = readFile(path("file"));
                EXPECT_EQ(left ? std::optional(*left) : std::nullopt, expected) << removes << deed << late;
                EXPECT_EQ(entries().size(), expected ? 1 : 0) << "nothing is left behind";
            }
        }
    }
}

TEST_F(AtomicFile, LeftUnfinishedIsRemovedOnceItsProcessIsGoneAndAnHourHasPassed) {
    // No process has a number as large as that.
    const struct {
        const char* name;
        int age;
        bool stays;
    } cases[] = {
        {".kestrant-999999999-0.tmp", 3700, false},
        {".kestrant-999999999-1.tmp", 3500, true},
        {".kestrant-1-0.tmp", 3700, true},
        {".kestrant-999999999-0.other", 3700, true},
        {".kestrant-x-0.tmp", 3700, true},
        {"kestrant-999999999-0.tmp", 3700, true},
        {".kestrant-999999999-2.tmp/color", 0, false},
    };
    QStringList staying;
    for (const auto& each : cases) {
        const QString top = QString::fromLatin1(each.name).section(u'/', 0, 0);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path(each.name)).path()));
        put(each.name, "x");
        const timespec past{::time(nullptr) - std::max(each.age, 3700 * int(top != each.name)), 0};
        const timespec times[] = {past, past};
        ASSERT_EQ(::utimensat(AT_FDCWD, qPrintable(path(top.toLatin1())), times, 0), 0);
        if (each.stays)
            staying.append(top);
    }
    removeAbandonedFiles(folder.path());
    staying.sort();
    EXPECT_EQ(entries(), staying);
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
