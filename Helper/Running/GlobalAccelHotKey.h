// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QDBusConnection>
#include <QList>
#include <QObject>

#include <functional>
#include <optional>

/// The desktop's own hot keys, by `org.kde.kglobalaccel` on the session bus. The user finds and changes them
/// in the desktop's settings, too.
class GlobalAccelHotKey : public QObject, public HotKey
{
    Q_OBJECT

public:
    /// The name of the service on the bus.
    static inline const QString service = QStringLiteral("org.kde.kglobalaccel");

    /// \a owner is the service's, by the name that is the program's own.
    GlobalAccelHotKey(QDBusConnection bus, QString owner, Handlers handlers);
    ~GlobalAccelHotKey() override;

    QString name() const override;
    void grab(const KeyCombo &combo) override;
    void keyboardChanged() override;

private Q_SLOTS:
    void pressed(const QString &component, const QString &action, qlonglong time);

private:
    /// As the service numbers them.
    QList<int> presentKeys() const;
    /// Sets them, and calls \a unset if something else has them.
    void setKeys(const std::function<void(const QString &reason)> &unset);
    void call(const QString &method, const QVariantList &arguments,
              const std::function<void(const class QDBusMessage &reply)> &then);

    QDBusConnection bus_;
    const QString owner_;
    const Handlers handlers_;
    KeyCombo combo_;
    /// Those that it was asked for last, which are none under a layout without the key.
    std::optional<QList<int>> keys_;
    /// It may be, from the question on.
    bool isRegistered_ = false;
    bool isHeard_ = false;
};
