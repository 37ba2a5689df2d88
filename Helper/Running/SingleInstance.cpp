// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/SingleInstance.h"

#include "Helper/HelperService.h"
#include "Platform/FileLayer.h"

#include <QDBusConnection>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcInstance, "quenby.helper.instance")

const QString lockName = QStringLiteral("/quenby-helper.lock");

} // namespace

SingleInstance::~SingleInstance()
{
    release();
}

bool SingleInstance::acquire(const QString &runtimeFolder, bool hasBus)
{
    if (!runtimeFolder.isEmpty()) {
        QString error;
        constexpr int withoutWaiting = 0;
        std::optional<FileLock> lock =
            FileLock::acquire(FileLayer::real(), runtimeFolder + lockName, withoutWaiting, &error);
        if (!lock) {
            qCInfo(lcInstance) << "another helper runs:" << error;
            return false;
        }
        lock_.emplace(std::move(*lock));
    }
    if (!hasBus)
        return true;
    hasName_ = QDBusConnection::sessionBus().registerService(HelperService::name);
    if (!hasName_)
        qCInfo(lcInstance) << "another helper runs on the session bus";
    return hasName_;
}

void SingleInstance::release()
{
    if (hasName_)
        QDBusConnection::sessionBus().unregisterService(HelperService::name);
    hasName_ = false;
    lock_.reset();
}
