// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/HelperService.h"
#include "Helper/Launcher/Launcher.h"
#include "Helper/Running/CreationWorker.h"
#include "Platform/Bus/Mailbox.h"
#include "Platform/Result.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

#include <functional>
#include <optional>

/// The running helper as other programs find it on the session bus, see HelperService. What they ask for is
/// understood, and answered, on a thread of its own: whatever they send, menus and windows go on living.
class HelperObject : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.quenby.QNBHelper")

public:
    /// All but openLauncher are called on the object's thread.
    struct Handlers
    {
        /// What is to be done to create a preset in some folders; fails, with the reason for people, if that
        /// makes no sense.
        std::function<Result<QList<CreationOrder>>(const HelperService::Preset &preset,
                                                   const QStringList &folders)>
            understand;
        /// False if too much is to be done already.
        std::function<bool(const QList<CreationOrder> &orders)> give;
        /// What the launcher shows for \a folders; fails, with the reason for people, if that makes no sense.
        std::function<Result<Launcher::Content>(const QStringList &folders)> contentFor = {};
        /// Opens the launcher. On the thread that made the object.
        std::function<void(const Launcher::Content &content, const QByteArray &activationToken)>
            openLauncher = {};
    };

    HelperObject(QDBusConnection bus, Handlers handlers);
    /// What State() answers from now on.
    void setState(const QVariantMap &state);
    /// Waits for what is being understood.
    ~HelperObject() override;

public Q_SLOTS:
    void Create(const QString &label, int position, const QStringList &folders);
    void Create(const QString &label, const QStringList &folders);
    void ShowLauncher(const QStringList &folders, const QString &activationToken);
    /// What older command lines know.
    void ShowMenu(const QStringList &folders);
    /// See QNBHelperState.
    QVariantMap State();

private:
    struct Request
    {
        Launcher::Content content;
        QByteArray activationToken;
    };

    void refuseAsTooMuch();
    void openLatest();

    QDBusConnection bus_;
    const Handlers handlers_;
    QMutex stateLock_;
    QVariantMap state_;
    QMutex requestLock_;
    /// What is to be opened next: of requests that wait for the other thread only the latest counts.
    std::optional<Request> request_;
    const Mailbox mailbox_;
    const std::function<void()> requestChanged_;
    QThread thread_;
};
