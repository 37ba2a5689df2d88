// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QRect>
#include <QString>

#include <optional>

/// One object of another program's windows, as that program describes it to assistive technology. Where it is
/// gone, or says nothing, texts are empty, lists too, and no state is on.
class Accessible
{
public:
    /// Numbers of the accessibility protocol.
    enum class State {
        Checked = 4,
        Editable = 7,
        Enabled = 8,
        Expanded = 10,
        Focused = 12,
        Selected = 23,
        Showing = 25
    };

    Accessible() = default;
    Accessible(const QDBusConnection &bus, const QString &service, const QString &path);

    /// Whether it is the same object.
    friend bool operator==(const Accessible &one, const Accessible &other)
    {
        return one.service_ == other.service_ && one.path_ == other.path_;
    }

    QString name() const;
    /// The kind of object, such as "tree item".
    QString role() const;
    /// What an editable object holds.
    QString text() const;
    /// Where it is on the screen.
    QRect extents() const;
    bool has(State state) const;
    QList<Accessible> children() const;

    /// The first object below this one, in depth, with this role and this name.
    std::optional<Accessible> find(const QString &role, const QString &name) const;
    /// Every object below this one with this role.
    QList<Accessible> findAll(const QString &role) const;

private:
    QDBusMessage call(const QString &interface, const QString &member,
                      const QVariantList &arguments = {}) const;

    QDBusConnection bus_ = QDBusConnection(QString());
    QString service_;
    QString path_;
};
