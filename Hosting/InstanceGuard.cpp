// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/InstanceGuard.h"

#include "Platform/Desktop/DesktopFolders.h"

#include <QCoreApplication>
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
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcInstance, "quenby.hosting.instance")

/// A request is one packet; one with more files than fit, hundreds of paths, is several.
constexpr size_t largestPacket = 128 * 1024;
/// In bytes; leaves room for the rest.
constexpr qsizetype mostOfFiles = largestPacket / 2;
/// What is answered to each. The first version reads over files, and answers as if there were none.
constexpr char taken = '+';
constexpr char takenWithFiles = 'f';
constexpr int retryInterval = 20;
/// How long the first waits for each packet of one that has connected, which sends it at once.
constexpr int packetTimeout = 200;
/// How long, and for how many of them, it listens to one: it has its own work to do. Who has more to say
/// connects again.
constexpr int connectionTimeout = 500;
constexpr int mostPackets = 64;

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

/// Whether as many files as it says can follow. The library makes room for them before it reads any.
bool holdsFiles(QDataStream &stream)
{
    constexpr qint64 leastSize = sizeof(quint32);
    const qint64 start = stream.device()->pos();
    quint32 count = 0;
    stream >> count;
    const bool fits = count <= stream.device()->bytesAvailable() / leastSize;
    stream.device()->seek(start);
    if (!fits)
        stream.setStatus(QDataStream::ReadCorruptData);
    return fits;
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

struct InstanceGuard::Packet
{
    QByteArray bytes;
    /// Of one that has understood all of it.
    char answer = taken;
};

QList<InstanceGuard::Packet> InstanceGuard::packetsOf(const Request &request)
{
    QList<Packet> packets;
    qsizetype next = 0;
    do {
        QStringList files;
        for (qsizetype size = 0; next < request.files.size(); ++next) {
            const QString &file = request.files.at(next);
            size += qsizetype(sizeof(quint32) + sizeof(QChar) * size_t(file.size()));
            if (!files.isEmpty() && size > mostOfFiles)
                break;
            files.append(file);
        }
        const Request part{request.panePath, packets.isEmpty() ? request.activationToken : QByteArray(),
                           files};
        Packet packet{{}, files.isEmpty() ? taken : takenWithFiles};
        QDataStream stream(&packet.bytes, QIODevice::WriteOnly);
        stream << part.panePath << part.activationToken << part.files << (next < request.files.size());
        packets.append(packet);
    } while (next < request.files.size());
    return packets;
}

QString InstanceGuard::whyNoAnswer()
{
    return QCoreApplication::translate("InstanceGuard",
                                       "The settings are open already, in a program that does not answer, or "
                                       "in a page of System Settings with "
                                       "changes that could not be saved: show that page again.");
}

InstanceGuard::Outcome InstanceGuard::begin(const Request &request, std::chrono::milliseconds timeout)
{
    QDeadlineTimer deadline(timeout);
    QList<Packet> packets = packetsOf(request);
    bool isBegun = false;
    const bool fits = std::all_of(packets.cbegin(), packets.cend(), [](const Packet &packet) {
        return packet.bytes.size() <= qsizetype(largestPacket);
    });
    for (;;) {
        if (becomeFirst())
            return Outcome::First;
        if (!fits)
            return Outcome::TooLong;
        const qsizetype left = packets.size();
        const Outcome outcome = hand(packets, deadline);
        // It is busy with what it has taken now.
        if (packets.size() < left) {
            isBegun = true;
            deadline = QDeadlineTimer(timeout);
        }
        // The other one may still be starting, or already ending.
        if (outcome != Outcome::NoAnswer)
            return outcome;
        if (deadline.hasExpired())
            return isBegun ? Outcome::HandedInPart : Outcome::NoAnswer;
        QThread::msleep(retryInterval);
    }
}

bool InstanceGuard::becomeFirst()
{
    if (lockPath_.isEmpty())
        return true;
    if (lock()) {
        if (socket_ < 0 && !listen())
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
    if (socket_ >= 0 && address.bind(socket_) == 0 && ::listen(socket_, backlog) == 0)
        return true;
    // One that nobody can reach would be told of without end.
    const int error = errno;
    if (socket_ >= 0)
        ::close(std::exchange(socket_, -1));
    errno = error;
    return false;
}

/// Takes out of \a packets what has arrived.
InstanceGuard::Outcome InstanceGuard::hand(QList<Packet> &packets, const QDeadlineTimer &deadline) const
{
    const SocketAddress address(socketPath_);
    const int connection = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    bool isConnected = address.connect(connection) == 0;
    Outcome outcome = Outcome::NoAnswer;
    while (isConnected && outcome == Outcome::NoAnswer) {
        const Packet &packet = packets.constFirst();
        char answer = 0;
        isConnected = ::send(connection, packet.bytes.constData(), size_t(packet.bytes.size()),
                             MSG_NOSIGNAL) == packet.bytes.size() &&
                      isReadable(connection, int(deadline.remainingTime())) &&
                      ::recv(connection, &answer, 1, 0) == 1;
        if (isConnected && answer == packet.answer) {
            packets.removeFirst();
            if (packets.isEmpty())
                outcome = Outcome::Handed;
        } else if (isConnected) {
            outcome = Outcome::WithoutFiles;
        }
    }
    ::close(connection);
    return outcome;
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
    Request request;
    bool isUnderstood = false;
    bool isMoreToCome = true;
    const QDeadlineTimer deadline(connectionTimeout);
    for (int count = 0; isMoreToCome && count < mostPackets &&
                        isReadable(connection, std::min(packetTimeout, int(deadline.remainingTime())));
         ++count) {
        QByteArray packet(qsizetype(largestPacket), '\0');
        packet.truncate(std::max(::recv(connection, packet.data(), size_t(packet.size()), 0), ssize_t(0)));
        QDataStream stream(packet);
        Request part;
        isMoreToCome = false;
        stream >> part.panePath >> part.activationToken;
        // The first version asks for no files.
        if (!stream.atEnd() && holdsFiles(stream))
            stream >> part.files >> isMoreToCome;
        if (stream.status() != QDataStream::Ok)
            break;
        ::send(connection, part.files.isEmpty() ? &taken : &takenWithFiles, 1, MSG_NOSIGNAL);
        if (!isUnderstood)
            request = part;
        else
            request.files += part.files;
        isUnderstood = true;
    }
    ::close(connection);
    if (isUnderstood)
        handler(request);
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
