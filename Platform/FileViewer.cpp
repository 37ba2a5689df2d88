// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/FileViewer.h"

#include "Platform/SessionBus.h"
#include "Platform/Workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QThread>

#include <atomic>
#include <list>
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
/// In milliseconds. How long the destructor waits for what is under way; it is given up after that.
constexpr int answerTime = 500;
/// In milliseconds. How long the thread may then take to end; it is left behind after that.
constexpr int threadEndTimeout = 500;

struct Request
{
    QString busAddress;
    /// Of the item, and of what is opened if no file manager shows it.
    QString path;
    QString folder;
    std::chrono::milliseconds timeout;
};

/// Tells the file manager; what went wrong if it cannot or does not want to.
class Call
{
public:
    explicit Call(const Request &request)
        : bus_(QDBusConnection::connectToBus(request.busAddress, name_))
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, objectPath, interfaceName, showItems);
        const QString startupId;
        message << QStringList{QUrl::fromLocalFile(request.path).toString(QUrl::FullyEncoded)} << startupId;
        watcher_ =
            std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(message, int(request.timeout.count())));
    }
    ~Call()
    {
        watcher_.reset();
        QDBusConnection::disconnectFromBus(name_);
    }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    const QDBusPendingCallWatcher *watcher() const { return watcher_.get(); }
    /// To be called by the slot that learns of the answer. What went wrong, empty if nothing did.
    QString takeError()
    {
        const QDBusError error = watcher_->error();
        watcher_.release()->deleteLater();
        return error.isValid() ? error.name() + u' ' + error.message() : QString();
    }

private:
    /// The library keeps connections by name for the whole process.
    static QString nextName()
    {
        static std::atomic<unsigned> number;
        return QStringLiteral("quenby-file-viewer-%1").arg(++number);
    }

    const QString name_ = nextName();
    QDBusConnection bus_;
    std::unique_ptr<QDBusPendingCallWatcher> watcher_;
};

void openFolder(const Request &request, const QString &error)
{
    qCInfo(lcFileViewer) << "no file manager shows" << request.path << error << "- opening" << request.folder;
    // As a folder, though it may be an application.
    Workspace::openURL(QUrl::fromLocalFile(request.folder));
}

/// The calls that are not answered yet. Lives on the thread, and ends it.
class Calls final : public QObject
{
public:
    void add(const Request &request)
    {
        // The library waits half a minute for a bus that says nothing.
        if (SessionBus::ask(request.busAddress, busTimeout) != SessionBus::Answer::Yes) {
            openFolder(request, QStringLiteral("no bus"));
            return;
        }
        const auto call = calls_.emplace(calls_.end(), request);
        connect(call->watcher(), &QDBusPendingCallWatcher::finished, this, [this, call, request] {
            const QString error = call->takeError();
            calls_.erase(call);
            if (!error.isEmpty())
                openFolder(request, error);
            endThreadIfDone();
        });
    }

    void endThreadWhenAnswered()
    {
        isToEnd_ = true;
        endThreadIfDone();
    }

private:
    void endThreadIfDone() const
    {
        if (isToEnd_ && calls_.empty())
            thread()->quit();
    }

    std::list<Call> calls_;
    bool isToEnd_ = false;
};

} // namespace

/// The thread, and the calls on it.
class FileViewer::Worker
{
public:
    Worker()
    {
        thread_->setObjectName(QStringLiteral("file viewer"));
        calls_->moveToThread(thread_.get());
        QObject::connect(thread_.get(), &QThread::finished, calls_, &QObject::deleteLater);
        thread_->start();
    }
    ~Worker()
    {
        run([calls = calls_] { calls->endThreadWhenAnswered(); });
        if (thread_->wait(answerTime))
            return;
        thread_->quit();
        // It may be inside the library, with a bus that went silent.
        if (!thread_->wait(threadEndTimeout))
            static_cast<void>(thread_.release());
    }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    void add(const Request &request)
    {
        run([calls = calls_, request] { calls->add(request); });
    }

private:
    template <typename Action>
    void run(Action action)
    {
        QMetaObject::invokeMethod(calls_, std::move(action), Qt::QueuedConnection);
    }

    std::unique_ptr<QThread> thread_ = std::make_unique<QThread>();
    /// Destroyed on the thread.
    Calls *calls_ = new Calls;
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
    worker_->add({busAddress_, absolute, folder, timeout_});
    return true;
}
