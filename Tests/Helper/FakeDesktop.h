// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusVirtualObject>
#include <QList>
#include <QString>
#include <QStringList>

/// A desktop that takes notifications on a bus of the test's own, and answers as it is told.
class FakeDesktop final : public QDBusVirtualObject
{
public:
    struct Shown
    {
        QString program;
        QString title;
        QString text;
        QStringList actions;
        uint id = 0;
    };
    enum class Manner { Helpful, Refusing, Silent };

    FakeDesktop(const QString &busAddress, QStringList capabilities, Manner manner = Manner::Helpful);
    ~FakeDesktop() override;

    const QList<Shown> &shown() const { return shown_; }
    /// As if the user had chosen that.
    void choose(uint id, const QString &action);
    void close(uint id);

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }
    void send(const QString &signal, const QList<QVariant> &arguments);

    const QStringList capabilities_;
    const Manner manner_;
    QList<Shown> shown_;
};
