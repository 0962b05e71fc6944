#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QString>

#include <chrono>
#include <functional>

namespace kestrant {

/// Local socket at which a running program takes commands, for this user alone. A connection is one command,
/// a line, answered with "ok" when it is known; then it ends. It also ends without an answer when it brings
/// more than a command can have, when it takes too long over it, and when too many are open. Thread: the one
/// it is created on, which runs a Qt event loop.
class CommandSocket final : public QLocalServer {
  public:
    /// In bytes, the end of the line included.
    static constexpr qint64 longestCommand = 32 * 1024;
    static constexpr int mostConnections = 8;

    /// Carries out a command; false when there is none of that name.
    using Handler = std::function<bool(const QByteArray& command)>;

    /// A command must arrive, and its answer be taken, within `patience`.
    explicit CommandSocket(Handler handler, std::chrono::milliseconds patience = std::chrono::seconds(2));

    /// Takes the place of whatever is at `path`. False when that is not possible.
    [[nodiscard]] bool listenAt(const QString& path);
    [[nodiscard]] int connectionCount() const { return connectionCount_; }

  protected:
    void incomingConnection(quintptr descriptor) override;

  private:
    void read(QLocalSocket& socket);

    Handler handler_;
    std::chrono::milliseconds patience_;
    int connectionCount_ = 0;
};

}  // namespace kestrant
