#include "app/CommandSocket.h"

#include <QLocalSocket>
#include <QTimer>

#include <unistd.h>

#include <utility>

namespace kestrant {

CommandSocket::CommandSocket(Handler handler, std::chrono::milliseconds patience)
    : handler_(std::move(handler))
    , patience_(patience) {
    setSocketOptions(UserAccessOption);
}

bool CommandSocket::listenAt(const QString& path) {
    // A socket found there is left over from a process that was killed.
    removeServer(path);
    return listen(path);
}

void CommandSocket::incomingConnection(quintptr descriptor) {
    if (connectionCount_ >= mostConnections) {
        ::close(static_cast<int>(descriptor));
        return;
    }
    ++connectionCount_;
    auto* socket = new QLocalSocket(this);
    socket->setReadBufferSize(longestCommand);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(*socket); });
    connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
        --connectionCount_;
        socket->deleteLater();
    });
    QTimer::singleShot(patience_, socket, [socket] { socket->abort(); });
    socket->setSocketDescriptor(static_cast<qintptr>(descriptor));
}

void CommandSocket::read(QLocalSocket& socket) {
    if (!socket.canReadLine()) {
        if (socket.bytesAvailable() >= longestCommand)
            socket.abort();
        return;
    }
    // Only the command is read; bytes after it are ignored.
    disconnect(&socket, &QLocalSocket::readyRead, nullptr, nullptr);
    if (handler_(socket.readLine().trimmed()))
        socket.write("ok\n");
    socket.disconnectFromServer();
}

}  // namespace kestrant
