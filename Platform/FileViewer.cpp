// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/FileViewer.h"

#include "Platform/SessionBus.h"
#include "Platform/Workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QThread>

#include <utility>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcFileViewer, "quenby.platform.fileviewer")

const QString service = QStringLiteral("org.freedesktop.FileManager1");
const QString objectPath = QStringLiteral("/org/freedesktop/FileManager1");
const QString interfaceName = service;
const QString showItems = QStringLiteral("ShowItems");

/// For the bus itself, which has nothing to start.
constexpr auto busTimeout = 1000ms;
/// How long the destructor waits for the thread to end; it is left behind after that.
constexpr int threadEndTimeout = 500;

/// What went wrong, empty if nothing did.
QString show(const QString &busAddress, const QString &path, std::chrono::milliseconds timeout)
{
    // The library waits half a minute for a bus that says nothing.
    if (SessionBus::ask(busAddress, busTimeout) != SessionBus::Answer::Yes)
        return QStringLiteral("no bus");
    // The library keeps connections by name for the whole process.
    const QString connectionName =
        QStringLiteral("quenby-file-viewer-%1").arg(quintptr(QThread::currentThread()), 0, 16);
    QString error;
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(busAddress, connectionName);
        QDBusMessage call = QDBusMessage::createMethodCall(service, objectPath, interfaceName, showItems);
        const QString startupId;
        call << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << startupId;
        const QDBusMessage reply = bus.call(call, QDBus::Block, int(timeout.count()));
        if (reply.type() == QDBusMessage::ErrorMessage)
            error = reply.errorName() + u' ' + reply.errorMessage();
        else if (reply.type() != QDBusMessage::ReplyMessage)
            error = QStringLiteral("no answer");
    }
    QDBusConnection::disconnectFromBus(connectionName);
    return error;
}

} // namespace

/// The thread, and an object on it that does the work.
class FileViewer::Worker
{
public:
    Worker()
    {
        thread_->setObjectName(QStringLiteral("file viewer"));
        object_->moveToThread(thread_.get());
        QObject::connect(thread_.get(), &QThread::finished, object_, &QObject::deleteLater);
        thread_->start();
    }
    ~Worker()
    {
        thread_->quit();
        if (!thread_->wait(threadEndTimeout))
            static_cast<void>(thread_.release());
    }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    template <typename Action>
    void run(Action action)
    {
        QMetaObject::invokeMethod(object_, std::move(action), Qt::QueuedConnection);
    }

private:
    std::unique_ptr<QThread> thread_ = std::make_unique<QThread>();
    /// Destroyed on the thread.
    QObject *object_ = new QObject;
};

FileViewer::FileViewer()
    : FileViewer(SessionBus::address())
{
}

FileViewer::FileViewer(QString busAddress, std::chrono::milliseconds timeout)
    : busAddress_(std::move(busAddress))
    , timeout_(timeout)
{
}

FileViewer::~FileViewer() = default;

bool FileViewer::selectFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink()) {
        qCWarning(lcFileViewer) << "not shown, nothing is there:" << path;
        return false;
    }
    if (!worker_)
        worker_ = std::make_unique<Worker>();
    const QString absolute = file.absoluteFilePath();
    const QString folder = file.isDir() ? absolute : file.absolutePath();
    worker_->run([busAddress = busAddress_, timeout = timeout_, absolute, folder] {
        const QString error = show(busAddress, absolute, timeout);
        if (error.isEmpty())
            return;
        qCInfo(lcFileViewer) << "no file manager shows" << absolute << error << "- opening" << folder;
        // As a folder, though it may be an application.
        Workspace::openURL(QUrl::fromLocalFile(folder));
    });
    return true;
}
