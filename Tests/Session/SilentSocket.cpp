// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/SilentSocket.h"

#include <QFile>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString socketName = QStringLiteral("silent");

} // namespace

// The kernel completes connections and stores what is sent for as long as the queue has room: to a client
// this is a server that accepted it, without a thread here.
SilentSocket::SilentSocket()
    : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(folder_.filePath(socketName));
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    if (::bind(descriptor_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(descriptor_, 100) != 0)
        qFatal("%s: %s", path.constData(), std::strerror(errno));
}

SilentSocket::~SilentSocket()
{
    ::close(descriptor_);
}

QString SilentSocket::busAddress() const
{
    return QStringLiteral("unix:path=%1").arg(folder_.filePath(socketName));
}
