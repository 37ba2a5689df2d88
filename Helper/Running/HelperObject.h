// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusContext>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

/// The running helper as other programs find it on the session bus, see HelperService.
class HelperObject : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.quenby.QNBHelper")

public:
    /// Gives the order to create a preset in some folders; false, with the reason for people in \a error, if
    /// it makes no sense.
    using CreateHandler =
        std::function<bool(const QString &preset, const QStringList &folders, QString *error)>;

    explicit HelperObject(CreateHandler create);
    ~HelperObject() override;

public Q_SLOTS:
    void Create(const QString &preset, const QStringList &folders);

private:
    const CreateHandler create_;
};
