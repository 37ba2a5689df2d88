// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HelperObject.h"

#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcObject, "quenby.helper.bus")

/// Many times what desktops give, in characters.
constexpr qsizetype longestToken = 1024;

} // namespace

HelperObject::HelperObject(QDBusConnection bus, Handlers handlers)
    : bus_(std::move(bus))
    , handlers_(std::move(handlers))
    , requestChanged_(mailbox_.bound<>([this] { openLatest(); }))
{
    thread_.setObjectName(QStringLiteral("orders"));
    moveToThread(&thread_);
    thread_.start();
    if (!bus_.registerObject(HelperService::path, this, QDBusConnection::ExportAllSlots))
        qCWarning(lcObject) << "not to be reached on the session bus";
}

HelperObject::~HelperObject()
{
    bus_.unregisterObject(HelperService::path);
    thread_.quit();
    thread_.wait();
}

void HelperObject::Create(const QString &label, const QStringList &folders)
{
    Create(label, 0, folders);
}

void HelperObject::Create(const QString &label, int position, const QStringList &folders)
{
    if (folders.size() > CreationWorker::mostWaiting) {
        refuseAsTooMuch();
        return;
    }
    const HelperService::Preset preset{label, position > 0 ? std::optional(position) : std::nullopt};
    const Result<QList<CreationOrder>> orders = handlers_.understand(preset, folders);
    if (!orders)
        sendErrorReply(QDBusError::InvalidArgs, orders.error);
    else if (!handlers_.give(*orders))
        refuseAsTooMuch();
}

void HelperObject::ShowLauncher(const QStringList &folders, const QString &activationToken)
{
    if (folders.size() > CreationWorker::mostWaiting) {
        refuseAsTooMuch();
        return;
    }
    const Result<Launcher::Content> content = handlers_.contentFor(folders);
    if (!content) {
        sendErrorReply(QDBusError::InvalidArgs, content.error);
        return;
    }
    const bool isToken = activationToken.size() <= longestToken;
    const QMutexLocker lock(&requestLock_);
    if (!std::exchange(request_, Request{*content, isToken ? activationToken.toUtf8() : QByteArray()}))
        requestChanged_();
}

void HelperObject::ShowMenu(const QStringList &folders)
{
    ShowLauncher(folders, {});
}

void HelperObject::setState(const QVariantMap &state)
{
    const QMutexLocker lock(&stateLock_);
    state_ = state;
}

QVariantMap HelperObject::State()
{
    const QMutexLocker lock(&stateLock_);
    return state_;
}

void HelperObject::refuseAsTooMuch()
{
    sendErrorReply(QDBusError::LimitsExceeded,
                   tr("Nothing of it was begun: no more than %1 folders may wait at a time")
                       .arg(CreationWorker::mostWaiting));
}

void HelperObject::openLatest()
{
    QMutexLocker lock(&requestLock_);
    const std::optional<Request> request = std::exchange(request_, std::nullopt);
    lock.unlock();
    if (request)
        handlers_.openLauncher(request->content, request->activationToken);
}
