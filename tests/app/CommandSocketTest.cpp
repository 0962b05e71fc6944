#include "app/CommandSocket.h"

#include "network/EventLoop.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <memory>
#include <vector>

namespace kestrant {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A time-out for tests that are not about time-outs, longer than any of them takes.
constexpr auto ages = std::chrono::hours(1);

class CommandSocketTest : public ::testing::Test {
  protected:
    explicit CommandSocketTest(std::chrono::milliseconds patience = ages)
        : socket(
              [this](const QByteArray& command) {
                  commands.push_back(command);
                  return command == "Show";
              },
              patience) {
        ensureApplication();
        EXPECT_TRUE(socket.listenAt(path));
    }
    std::unique_ptr<QLocalSocket> connected() {
        auto client = std::make_unique<QLocalSocket>();
        client->connectToServer(path);
        EXPECT_TRUE(client->waitForConnected());
        return client;
    }
    static bool isEnded(QLocalSocket& client) {
        return turnUntil([&] { return client.state() == QLocalSocket::UnconnectedState; });
    }

    QTemporaryDir folder;
    QString path = folder.filePath("commands");
    std::vector<QByteArray> commands;
    CommandSocket socket;
};

class ImpatientCommandSocketTest : public CommandSocketTest {
  protected:
    ImpatientCommandSocketTest() : CommandSocketTest(std::chrono::milliseconds(20)) {}
};

}  // namespace

TEST_F(CommandSocketTest, IsForThisUserAndAnswersOneKnownCommandPerConnection) {
    struct stat status {};
    ASSERT_EQ(::stat(path.toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0077U, 0U);
    for (const auto& [sent, answer] : {std::pair("Show\n", "ok\n"), std::pair("Show\nShow\n", "ok\n"),
                                       std::pair("Hide\n", ""), std::pair("\n", "")}) {
        auto client = connected();
        client->write(sent);
        ASSERT_TRUE(isEnded(*client)) << sent;
        EXPECT_EQ(client->readAll(), answer) << sent;
    }
    EXPECT_THAT(commands, ElementsAre("Show", "Show", "Hide", ""));
    auto inParts = connected();
    for (const char* part : {"Sh", "ow", "\n"}) {
        inParts->write(part);
        inParts->flush();
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(isEnded(*inParts));
    EXPECT_EQ(inParts->readAll(), "ok\n");
    EXPECT_EQ(socket.connectionCount(), 0);
}

TEST_F(CommandSocketTest, ALineWithoutEndEndsTheConnection) {
    auto client = connected();
    const QByteArray block(1024 * 1024, 'x');
    // More than the two sockets hold between them.
    for (int blocks = 0; blocks < 16 && client->state() == QLocalSocket::ConnectedState; ++blocks) {
        client->write(block);
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(isEnded(*client));
    EXPECT_THAT(commands, IsEmpty());
}

TEST_F(CommandSocketTest, TooManyConnectionsAreRefused) {
    std::vector<std::unique_ptr<QLocalSocket>> open;
    for (int index = 0; index < CommandSocket::mostConnections; ++index)
        open.push_back(connected());
    ASSERT_TRUE(turnUntil([&] { return socket.connectionCount() == CommandSocket::mostConnections; }));
    auto refused = connected();
    refused->write("Show\n");
    ASSERT_TRUE(isEnded(*refused));
    EXPECT_THAT(commands, IsEmpty());
    open.front()->write("Show\n");
    ASSERT_TRUE(isEnded(*open.front()));
    EXPECT_EQ(open.front()->readAll(), "ok\n");
}

TEST_F(ImpatientCommandSocketTest, AConnectionThatBringsNoCommandInTimeEnds) {
    auto silent = connected();
    auto slow = connected();
    slow->write("Sho");
    EXPECT_TRUE(isEnded(*silent) && isEnded(*slow));
    EXPECT_EQ(socket.connectionCount(), 0);
    EXPECT_THAT(commands, IsEmpty());
}

}  // namespace kestrant
