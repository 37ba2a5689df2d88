// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusVirtualObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// A desktop's tray on a bus of the test's own, and a user who reads and clicks the menu of what is in it.
class FakeTray final : public QDBusVirtualObject
{
public:
    struct Entry
    {
        int id = 0;
        QString label;
        bool isEnabled = true;
        bool isSeparator = false;
        QList<Entry> children;

        /// The labels of the children, a separator being "-".
        QStringList labels() const;
        /// Empty if there is none.
        Entry child(const QString &childLabel) const;
    };

    /// Without \a hasHost it does not say whether something shows what is registered.
    explicit FakeTray(const QString &busAddress, std::optional<bool> hasHost = true);
    ~FakeTray() override;

    /// From now on something shows what is registered.
    void addHost();
    /// Whether something is in the tray.
    bool hasItem() const;
    /// The menu of the item; waits until \a label is among its entries. What is there then if it never is.
    Entry menuWith(const QString &label);
    Entry menu();
    void click(const Entry &entry);
    /// A click on the item itself.
    void activate();

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;
    QDBusMessage ask(const QString &path, const QString &interface, const QString &member,
                     const QVariantList &arguments);

    std::optional<bool> hasHost_;
    QStringList items_;
};
