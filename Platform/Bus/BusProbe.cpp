// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/BusProbe.h"

#include "Platform/Files/FileDescriptor.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QStringList>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// The part of the D-Bus protocol that a client speaks until the bus has accepted it: the EXTERNAL
// authentication of the D-Bus Specification ("Authentication Protocol"), then the method call "Hello" in the
// little-endian wire format ("Message Protocol"). The reply's first bytes are enough to know.

namespace {

Q_LOGGING_CATEGORY(lcBus, "quenby.platform.bus", QtInfoMsg)

/// What Qt calls its own connection to the session bus. Whoever asks it for that connection gets the one of
/// this name, if there is one.
const QString libraryConnection = QStringLiteral("qt_default_session_bus");

struct SocketAddress
{
    sockaddr_un storage = {};
    socklen_t length = 0;
};

std::optional<SocketAddress> socketAddress(const QByteArray &name, bool abstract)
{
    SocketAddress result;
    const size_t offset = abstract ? 1 : 0;
    if (name.isEmpty() || size_t(name.size()) + 1 > sizeof result.storage.sun_path)
        return std::nullopt;
    result.storage.sun_family = AF_UNIX;
    std::memcpy(result.storage.sun_path + offset, name.constData(), size_t(name.size()));
    result.length = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size()) + 1);
    return result;
}

QByteArray runtimeBusPath()
{
    const QByteArray runtimeFolder = qgetenv("XDG_RUNTIME_DIR");
    return runtimeFolder.isEmpty() ? QByteArray() : runtimeFolder + "/bus";
}

/// The socket of one address `unix:key=value,…`; none for another transport.
std::optional<SocketAddress> socketAddress(const QString &address)
{
    static const QString transport = QStringLiteral("unix:");
    if (!address.startsWith(transport))
        return std::nullopt;
    const QStringList pairs = address.mid(transport.size()).split(u',');
    for (const QString &pair : pairs) {
        const qsizetype equals = pair.indexOf(u'=');
        const QString key = pair.left(equals);
        const QByteArray value = QByteArray::fromPercentEncoding(pair.mid(equals + 1).toUtf8());
        if (key == u"path")
            return socketAddress(value, false);
        if (key == u"abstract")
            return socketAddress(value, true);
        if (key == u"runtime")
            return socketAddress(runtimeBusPath(), false);
    }
    return std::nullopt;
}

bool waitFor(int fd, short events, const QDeadlineTimer &deadline)
{
    pollfd entry = {fd, events, 0};
    for (;;) {
        const int ready = ::poll(&entry, 1, int(deadline.remainingTime()));
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

BusProbe::Answer send(int fd, const QByteArray &bytes, const QDeadlineTimer &deadline)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            ::send(fd, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0)
            sent += count;
        else if (errno == EAGAIN && !waitFor(fd, POLLOUT, deadline))
            return BusProbe::Answer::Silence;
        else if (errno != EAGAIN && errno != EINTR)
            return BusProbe::Answer::Nobody;
    }
    return BusProbe::Answer::Yes;
}

/// Receives until \a isEnough says so.
template <typename Enough>
BusProbe::Answer receive(int fd, QByteArray &into, const QDeadlineTimer &deadline, Enough isEnough)
{
    while (!isEnough(into)) {
        // Who never stops to send is not listened to for longer.
        if (deadline.hasExpired() || !waitFor(fd, POLLIN, deadline))
            return BusProbe::Answer::Silence;
        char buffer[512];
        const ssize_t count = ::recv(fd, buffer, sizeof buffer, MSG_DONTWAIT);
        if (count > 0)
            into.append(buffer, count);
        else if (count == 0 || (errno != EAGAIN && errno != EINTR))
            return BusProbe::Answer::Nobody;
    }
    return BusProbe::Answer::Yes;
}

void appendUInt32(QByteArray &message, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8)
        message.append(char((value >> shift) & 0xff));
}

/// One header field that holds a string: code, signature, value; begins on a boundary of eight bytes.
void appendField(QByteArray &message, char code, char type, const QByteArray &value)
{
    message.append(QByteArray(-message.size() & 7, '\0'));
    message.append(code);
    message.append('\1').append(type).append('\0');
    appendUInt32(message, quint32(value.size()));
    message.append(value).append('\0');
}

QByteArray helloMessage()
{
    QByteArray message("l\1\0\1", 4); // little-endian, method call, no flags, version 1
    appendUInt32(message, 0);         // no body
    appendUInt32(message, 1);         // serial
    const qsizetype lengthAt = message.size();
    appendUInt32(message, 0);
    const qsizetype fieldsAt = message.size();
    appendField(message, 1, 'o', "/org/freedesktop/DBus");
    appendField(message, 6, 's', "org.freedesktop.DBus");
    appendField(message, 2, 's', "org.freedesktop.DBus");
    appendField(message, 3, 's', "Hello");
    QByteArray length;
    appendUInt32(length, quint32(message.size() - fieldsAt));
    message.replace(lengthAt, length.size(), length);
    message.append(QByteArray(-message.size() & 7, '\0'));
    return message;
}

BusProbe::Answer askSocket(const SocketAddress &address, const QDeadlineTimer &deadline)
{
    using BusProbe::Answer;
    const FileDescriptor socket(FileLayer::real(),
                                ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen())
        return Answer::Nobody;
    if (::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address.storage), address.length) != 0) {
        // A full queue of connections means that somebody is there and does not take them.
        return errno == EAGAIN ? Answer::Silence : Answer::Nobody;
    }

    const QByteArray user = QByteArray::number(qulonglong(::getuid())).toHex();
    Answer answer = send(socket.get(), QByteArray("\0", 1) + "AUTH EXTERNAL " + user + "\r\n", deadline);
    QByteArray line;
    if (answer == Answer::Yes)
        answer = receive(socket.get(), line, deadline,
                         [](const QByteArray &bytes) { return bytes.contains('\n'); });
    if (answer == Answer::Yes && !line.startsWith("OK "))
        return Answer::Nobody;
    if (answer == Answer::Yes)
        answer = send(socket.get(), "BEGIN\r\n" + helloMessage(), deadline);
    QByteArray reply;
    if (answer == Answer::Yes)
        answer =
            receive(socket.get(), reply, deadline, [](const QByteArray &bytes) { return bytes.size() >= 2; });
    if (answer == Answer::Yes && reply.at(1) != '\2') // a method return
        return Answer::Nobody;
    return answer;
}

} // namespace

QString BusProbe::address()
{
    QString fromEnvironment = qEnvironmentVariable(addressVariable);
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QByteArray path = runtimeBusPath();
    if (path.isEmpty())
        return noBusAddress;
    return QStringLiteral("unix:path=") + QString::fromLatin1(path.toPercentEncoding("/-_.\\*"));
}

BusProbe::Answer BusProbe::ask(const QString &address, std::chrono::milliseconds timeout)
{
    const QDeadlineTimer deadline(timeout);
    Answer best = Answer::Nobody;
    const QStringList alternatives = address.split(u';', Qt::SkipEmptyParts);
    for (const QString &alternative : alternatives) {
        const std::optional<SocketAddress> socket = socketAddress(alternative);
        if (!socket)
            continue;
        const Answer answer = askSocket(*socket, deadline);
        if (answer == Answer::Yes)
            return answer;
        if (answer == Answer::Silence)
            best = answer;
    }
    qCDebug(lcBus) << "no answer from the bus at" << address;
    return best;
}

bool BusProbe::keepLibraryFromWaiting(std::chrono::milliseconds timeout)
{
    if (ask(address(), timeout) == Answer::Yes)
        return true;
    qCInfo(lcBus) << "windows go on without the session bus";
    QDBusConnection::connectToBus(noBusAddress, libraryConnection);
    return false;
}

bool BusProbe::libraryHasBus()
{
    return QDBusConnection::sessionBus().isConnected();
}
