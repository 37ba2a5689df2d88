// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"
#include "ContextMenu/PresetMenu.h"
#include "Tests/Session/StandInPrograms.h"
#include "Tests/Session/TemporaryHome.h"

#include <QByteArrayList>
#include <QDateTime>
#include <QMap>
#include <QString>
#include <gtest/gtest.h>

/// A home without file managers, which this process takes for its user's; and a helper, in a pane, that
/// writes down what it is called with.
class MenuHome : public ::testing::Test
{
protected:
    enum class Programs {
        /// A shell and little more: whatever file managers this machine has are not those of this user.
        Few,
        OfThisMachine
    };
    explicit MenuHome(Programs programs = Programs::Few);
    ~MenuHome() override;

    /// What has to be shown as it is, whatever it means to those who read the entries.
    static QStringList hostileLabels();
    /// Names of folders that are hard to pass on.
    static QByteArrayList hostileFolders();

    /// In the home.
    QString in(const QString &name) const { return home_.filePath(name); }
    QString config(const QString &name) const { return home_.configFolder() + u'/' + name; }
    QString data(const QString &name) const { return home_.dataFolder() + u'/' + name; }
    QString makeFolder(const QString &path) const;
    static void put(const QString &path, const QByteArray &bytes);
    static QByteArray contentOf(const QString &path);

    /// Has every file manager that the plug-in knows be there.
    void haveAllFileManagers() const;
    /// Presets with these labels are stored in the user's domain, all with the tree \a hierarchy.
    void storePresets(const QStringList &labels, const QVariantMap &hierarchy = {}) const;

    /// What the entries are to call.
    QByteArray helper() const { return helper_.toUtf8(); }
    QString pane() const { return in(QStringLiteral("panes/Some.prefPane")); }
    /// Where the manifest has to be.
    QString manifest() const { return home_.stateFolder() + QStringLiteral("/Quenby/ContextMenu.plist"); }
    PresetMenu menuOf(const QStringList &labels) const;

    /// Runs \a program, and expects the helper to be called once by that, with the preset \a label and
    /// \a folders.
    void expectCalled(const QString &program, const QStringList &arguments, const QString &label,
                      const QByteArrayList &folders, const QMap<QString, QString> &variables = {});
    /// Expects that the helper is called once more, likewise; waits for it.
    void expectCall(const QString &label, const QByteArrayList &folders);
    bool hasBeenCalled() const;
    /// The arguments that the helper is to get.
    static QByteArrayList callFor(const QString &label, const QByteArrayList &folders);

    /// Everything in the home, but what is for the time of the session only: the content of files with their
    /// mode, and the folders.
    QMap<QString, QByteArray> contentOfHome() const;
    /// When each file was written last.
    QMap<QString, QDateTime> timesOfHome() const;

    TemporaryHome home_;
    StandInPrograms programs_;

private:
    QMap<QByteArray, QByteArray> before_;
    QString helper_;
    /// The calls so far, and how often each was made.
    qsizetype calls_ = 0;
    QMap<QByteArrayList, qsizetype> seen_;
};
