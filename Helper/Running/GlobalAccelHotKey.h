// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QDBusConnection>
#include <QList>
#include <QObject>

/// The desktop's own hot keys, by `org.kde.kglobalaccel` on the session bus. The user finds and changes them
/// in the desktop's settings, too.
class GlobalAccelHotKey : public QObject, public HotKey
{
    Q_OBJECT

public:
    GlobalAccelHotKey(QDBusConnection bus, Handlers handlers);
    ~GlobalAccelHotKey() override;

    QString name() const override;
    void grab(const KeyCombo &combo) override;
    void keyboardChanged() override;

private Q_SLOTS:
    void pressed(const QString &component, const QString &action, qlonglong time);

private:
    /// As the service numbers them.
    QList<int> presentKeys() const;
    void setKeys(const std::function<void(bool isSet)> &then);
    void call(const QString &method, const QVariantList &arguments,
              const std::function<void(const class QDBusMessage &reply)> &then);

    QDBusConnection bus_;
    const Handlers handlers_;
    KeyCombo combo_;
    /// Those that it was asked for last.
    QList<int> keys_;
    bool isRegistered_ = false;
};
