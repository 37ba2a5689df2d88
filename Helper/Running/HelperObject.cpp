// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HelperObject.h"

#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcObject, "quenby.helper.bus")

} // namespace

HelperObject::HelperObject(QDBusConnection bus, Handlers handlers)
    : bus_(std::move(bus))
    , handlers_(std::move(handlers))
    , menuChanged_(mailbox_.bound<>([this] { showLatestMenu(); }))
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

void HelperObject::ShowMenu(const QStringList &folders)
{
    if (folders.size() > CreationWorker::mostWaiting) {
        refuseAsTooMuch();
        return;
    }
    const Result<QStringList> labels = handlers_.labelsFor(folders);
    if (!labels) {
        sendErrorReply(QDBusError::InvalidArgs, labels.error);
        return;
    }
    const QMutexLocker lock(&menuLock_);
    if (!std::exchange(menu_, Menu{*labels, folders}))
        menuChanged_();
}

void HelperObject::refuseAsTooMuch()
{
    sendErrorReply(QDBusError::LimitsExceeded,
                   tr("Nothing of it was begun: no more than %1 folders may wait at a time")
                       .arg(CreationWorker::mostWaiting));
}

void HelperObject::showLatestMenu()
{
    QMutexLocker lock(&menuLock_);
    const std::optional<Menu> menu = std::exchange(menu_, std::nullopt);
    lock.unlock();
    if (menu)
        handlers_.showMenu(menu->labels, menu->folders);
}
