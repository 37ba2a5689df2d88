// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/HelperService.h"
#include "Helper/Running/CreationWorker.h"
#include "Platform/Mailbox.h"
#include "Platform/Result.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThread>

#include <functional>
#include <optional>

/// The running helper as other programs find it on the session bus, see HelperService. What they ask for is
/// understood, and answered, on a thread of its own: whatever they send, menus and windows go on living.
class HelperObject : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.quenby.QNBHelper")

public:
    /// All but showMenu are called on the object's thread.
    struct Handlers
    {
        /// What is to be done to create a preset in some folders; fails, with the reason for people, if that
        /// makes no sense.
        std::function<Result<QList<CreationOrder>>(const HelperService::Preset &preset,
                                                   const QStringList &folders)>
            understand;
        /// False if too much is to be done already.
        std::function<bool(const QList<CreationOrder> &orders)> give;
        /// The labels of the presets, of which one may be created in \a folders; fails, with the reason for
        /// people, if that makes no sense.
        std::function<Result<QStringList>(const QStringList &folders)> labelsFor = {};
        /// Shows a menu of them. On the thread that made the object.
        std::function<void(const QStringList &labels, const QStringList &folders)> showMenu = {};
    };

    HelperObject(QDBusConnection bus, Handlers handlers);
    /// Waits for what is being understood.
    ~HelperObject() override;

public Q_SLOTS:
    void Create(const QString &label, int position, const QStringList &folders);
    void Create(const QString &label, const QStringList &folders);
    void ShowMenu(const QStringList &folders);

private:
    struct Menu
    {
        QStringList labels;
        QStringList folders;
    };

    void refuseAsTooMuch();
    void showLatestMenu();

    QDBusConnection bus_;
    const Handlers handlers_;
    QMutex menuLock_;
    /// What is to be shown next: of menus that wait for the other thread only the latest is.
    std::optional<Menu> menu_;
    const Mailbox mailbox_;
    const std::function<void()> menuChanged_;
    QThread thread_;
};
