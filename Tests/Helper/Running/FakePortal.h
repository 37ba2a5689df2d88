// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QVariantMap>

#include <chrono>

/// The desktop's portal for hot keys on a bus of the test's own, and the user whom it asks.
class FakePortal final : public QDBusVirtualObject
{
public:
    /// What it calls the keys that it gives.
    static inline const QString givenKeys = QStringLiteral("Super+P");

    /// The desktop's leave to open a window, which comes with each activation.
    static inline const QString activationToken = QStringLiteral("leave of the desktop");

    enum class Manner {
        Granting,
        /// The same of an earlier desktop, which takes no names of applications.
        WithoutRegistry,
        /// There is no such portal.
        Unknown,
        /// It opens no session.
        Failing,
        /// It opens a session, and does not say so.
        OpeningSilently,
        /// It asks the user, who does not answer.
        Asking,
        /// The user is asked, and cancels.
        Cancelling,
        /// It grants what is asked for, and answers with the number of a failure.
        GrantingWithWrongNumber,
        /// The user agrees, and takes the shortcut from the list.
        GrantingNothing,
        /// It grants what is asked for, and names no keys.
        GrantingWithoutKeys,
        /// The user is asked, and cancels; the answer has the number of a failure.
        CancellingWithWrongNumber,
        /// It fails while it asks the user.
        FailingToAsk,
        /// It answers that it cannot ask the user.
        UnableToAsk,
        /// It ends when it is to ask the user.
        Dying,
    };

    explicit FakePortal(const QString &busAddress, Manner manner = Manner::Granting);
    ~FakePortal() override;

    /// Of the shortcut that was bound; empty if none is.
    QString shortcut() const { return shortcut_; }
    QVariantMap shortcutOptions() const { return options_; }
    /// Which application said that it asks.
    QString application() const { return application_; }
    /// What the session is known by.
    QString sessionToken() const { return sessionToken_; }
    bool hasSession() const { return !session_.isEmpty(); }
    /// How often the user was asked.
    int bindings() const { return bindings_; }
    /// When the user was asked last.
    std::chrono::steady_clock::time_point askedAt() const { return askedAt_; }
    /// From now on.
    void setManner(Manner manner) { manner_ = manner; }
    /// The user, or the desktop, ends the session.
    void closeSession();
    /// The user presses the keys of a shortcut.
    void activate(const QString &shortcut);
    /// The desktop gives its keys another name.
    void changeKeys(const QString &keys);
    /// The user takes the shortcut away from the session's.
    void takeShortcutAway();
    /// What the portal says then.
    QDBusMessage activation(const QString &shortcut) const;

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }
    void sayShortcutsAre(const QList<struct FakePortalShortcut> &shortcuts);
    static void answer(const QDBusMessage &message, const QVariantMap &options, uint response,
                       const QVariantMap &results, const QDBusConnection &connection);

    Manner manner_;
    QString application_;
    QString session_;
    QString sessionToken_;
    int bindings_ = 0;
    std::chrono::steady_clock::time_point askedAt_;
    QString shortcut_;
    QVariantMap options_;
};
