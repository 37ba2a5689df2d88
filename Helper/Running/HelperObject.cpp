// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HelperObject.h"

#include "Helper/HelperService.h"

#include <QDBusConnection>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcObject, "quenby.helper.bus")

} // namespace

HelperObject::HelperObject(CreateHandler create)
    : create_(std::move(create))
{
    if (!QDBusConnection::sessionBus().registerObject(HelperService::path, this,
                                                      QDBusConnection::ExportAllSlots))
        qCWarning(lcObject) << "not to be reached on the session bus";
}

HelperObject::~HelperObject()
{
    QDBusConnection::sessionBus().unregisterObject(HelperService::path);
}

void HelperObject::Create(const QString &preset, const QStringList &folders)
{
    QString error;
    if (!create_(preset, folders, &error))
        sendErrorReply(QDBusError::InvalidArgs, error);
}
