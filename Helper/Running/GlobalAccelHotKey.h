// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QObject>

/// The desktop's own hot keys, by `org.kde.kglobalaccel` on the session bus. The user finds and changes them
/// in the desktop's settings, too.
class GlobalAccelHotKey : public QObject, public HotKey
{
    Q_OBJECT

public:
    explicit GlobalAccelHotKey(Handlers handlers);
    ~GlobalAccelHotKey() override;

    QString name() const override;
    void grab(QKeyCombination keys) override;

private Q_SLOTS:
    void pressed(const QString &component, const QString &action, qlonglong time);

private:
    void setKeys(QKeyCombination keys);
    void call(const QString &method, const QVariantList &arguments,
              const std::function<void(const class QDBusMessage &reply)> &then);

    const Handlers handlers_;
    bool isRegistered_ = false;
};
