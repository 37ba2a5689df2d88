// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/InstanceGuard.h"

#include "Platform/DesktopFolders.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QFile>
#include <QIODevice>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

Q_LOGGING_CATEGORY(lcInstance, "quenby.hosting.instance")

/// A request is one packet; hundreds of paths fit.
constexpr size_t largestRequest = 128 * 1024;
constexpr char taken = '+';
constexpr int retryInterval = 20;
/// How long the first waits for a packet of one that has connected, which sends it at once.
constexpr int packetTimeout = 200;

constexpr int backlog = 16;

/// The address of a socket. It has room for some hundred bytes of the path; a socket with a longer one is
/// reached through its open folder.
class SocketAddress
{
public:
    explicit SocketAddress(const QByteArray &path)
    {
        address_.sun_family = AF_UNIX;
        isSet_ = set(path);
        if (isSet_)
            return;
        const qsizetype slash = path.lastIndexOf('/');
        folder_ = ::open(path.left(slash).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        isSet_ = folder_ >= 0 && set("/proc/self/fd/" + QByteArray::number(folder_) + path.mid(slash));
    }
    ~SocketAddress()
    {
        if (folder_ >= 0)
            ::close(folder_);
    }
    SocketAddress(const SocketAddress &) = delete;
    SocketAddress &operator=(const SocketAddress &) = delete;

    /// The result and the errno of the call of that name.
    int bind(int socket) const { return isSet_ ? ::bind(socket, address(), sizeof address_) : refuse(); }
    int connect(int socket) const
    {
        return isSet_ ? ::connect(socket, address(), sizeof address_) : refuse();
    }

private:
    bool set(const QByteArray &path)
    {
        if (size_t(path.size()) >= sizeof address_.sun_path)
            return false;
        std::memcpy(address_.sun_path, path.constData(), size_t(path.size()));
        return true;
    }
    static int refuse()
    {
        errno = ENAMETOOLONG;
        return -1;
    }
    const sockaddr *address() const { return reinterpret_cast<const sockaddr *>(&address_); }

    sockaddr_un address_ = {};
    int folder_ = -1;
    bool isSet_ = false;
};

bool isReadable(int descriptor, int timeout)
{
    pollfd entry = {descriptor, POLLIN, 0};
    return ::poll(&entry, 1, timeout) > 0;
}

} // namespace

InstanceGuard::InstanceGuard()
    : InstanceGuard(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
                    DesktopFolders::runtimeDirectory())
{
}

InstanceGuard::InstanceGuard(const QString &preferenceFolder, const QString &runtimeFolder)
{
    if (runtimeFolder.isEmpty())
        return;
    const QByteArray key =
        QCryptographicHash::hash(preferenceFolder.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
    const QByteArray path = QFile::encodeName(runtimeFolder) + "/quenby-preferences-" + key;
    lockPath_ = path + ".lock";
    socketPath_ = path + ".socket";
}

InstanceGuard::~InstanceGuard()
{
    close();
    if (lock_ >= 0)
        ::close(lock_);
}

InstanceGuard::Outcome InstanceGuard::begin(const Request &request, std::chrono::milliseconds timeout)
{
    const QDeadlineTimer deadline(timeout);
    for (;;) {
        if (becomeFirst())
            return Outcome::First;
        if (hand(request, int(deadline.remainingTime())))
            return Outcome::Handed;
        // The other one may still be starting, or already ending.
        if (deadline.hasExpired())
            return Outcome::NoAnswer;
        QThread::msleep(retryInterval);
    }
}

bool InstanceGuard::becomeFirst()
{
    if (lockPath_.isEmpty())
        return true;
    if (lock()) {
        if (!listen())
            qCWarning(lcInstance) << socketPath_ << std::strerror(errno);
        return true;
    }
    if (errno == EWOULDBLOCK)
        return false;
    qCWarning(lcInstance) << lockPath_ << std::strerror(errno);
    return true;
}

bool InstanceGuard::lock()
{
    if (lock_ < 0)
        lock_ = ::open(lockPath_.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    return lock_ >= 0 && ::flock(lock_, LOCK_EX | LOCK_NB) == 0;
}

bool InstanceGuard::listen()
{
    const SocketAddress address(socketPath_);
    // With the lock in our hands a socket that is there is left over.
    ::unlink(socketPath_.constData());
    socket_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    return socket_ >= 0 && address.bind(socket_) == 0 && ::listen(socket_, backlog) == 0;
}

bool InstanceGuard::hand(const Request &request, int timeout) const
{
    const SocketAddress address(socketPath_);
    QByteArray packet;
    QDataStream stream(&packet, QIODevice::WriteOnly);
    stream << request.panePath << request.activationToken << request.files;

    const int connection = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    char answer = 0;
    const bool isTaken =
        address.connect(connection) == 0 &&
        ::send(connection, packet.constData(), size_t(packet.size()), MSG_NOSIGNAL) == packet.size() &&
        isReadable(connection, std::max(timeout, 0)) && ::recv(connection, &answer, 1, 0) == 1 &&
        answer == taken;
    ::close(connection);
    return isTaken;
}

void InstanceGuard::handleWith(std::function<void(const Request &)> handler)
{
    if (socket_ < 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this, handler = std::move(handler)] { accept(handler); });
}

void InstanceGuard::accept(const std::function<void(const Request &)> &handler) const
{
    const int connection = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (connection < 0)
        return;
    QByteArray packet(qsizetype(largestRequest), '\0');
    ssize_t size = -1;
    if (isReadable(connection, packetTimeout))
        size = ::recv(connection, packet.data(), size_t(packet.size()), 0);
    Request request;
    if (size > 0) {
        packet.truncate(size);
        QDataStream stream(packet);
        stream >> request.panePath >> request.activationToken >> request.files;
        if (stream.status() == QDataStream::Ok) {
            ::send(connection, &taken, 1, MSG_NOSIGNAL);
            handler(request);
        }
    }
    ::close(connection);
}

void InstanceGuard::close()
{
    notifier_.reset();
    if (socket_ < 0)
        return;
    ::unlink(socketPath_.constData());
    ::close(socket_);
    socket_ = -1;
}
