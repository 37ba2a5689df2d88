// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/System/CMMInstaller.h"

#include <QList>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>

/// What an installer finds and does: folders of its own, of which the names may be anything, a user who
/// answers, and failures on demand. Everything that happens is noted down, in order.
class InstallerWorld
{
public:
    enum class Failure { None, Create, Remove, Copy };

    explicit InstallerWorld(const QByteArray &folderName = QByteArrayLiteral("world"));
    ~InstallerWorld();
    InstallerWorld(const InstallerWorld &) = delete;
    InstallerWorld &operator=(const InstallerWorld &) = delete;

    /// Services with the real file operations.
    CMMInstaller::Services services();
    void offer() { CMMInstaller(services()).offerToInstallCMM(); }

    /// A plug-in at \a path: an information file with \a version, and one that holds \a mark.
    static void makePlugin(const QByteArray &path, const QByteArray &version, const QByteArray &mark);
    /// A bundle's information file: that version, unless it is no text of one.
    static void makeInformation(const QByteArray &bundle, const QByteArray &content);
    static QByteArray versionEntry(const QByteArray &version);
    /// What makePlugin() marked the one at \a path with; empty if nothing is there.
    static QByteArray markOf(const QByteArray &path);
    static void makeFolders(const QByteArray &path);
    static QByteArrayList namesIn(const QByteArray &folder);

    QByteArray home() const { return root + "/home"; }
    QByteArray userFolder() const { return home() + "/Library/Contextual Menu Items"; }
    QByteArray installed() const { return userFolder() + "/QNBContextMenu.plugin"; }
    QByteArray machineLibrary() const { return root + "/machine"; }
    QByteArray machineWide() const
    {
        return machineLibrary() + "/Contextual Menu Items/QNBContextMenu.plugin";
    }
    QByteArray pane() const { return root + "/Some.prefPane"; }
    QByteArray ownPlugin() const { return pane() + "/Contents/MacOS/QNBContextMenu.plugin"; }

    std::optional<qint32> systemVersion = 0x1058;
    /// To the question, and none if the pane is left at it.
    std::optional<AlertPanel::Answer> answer = AlertPanel::Answer::Default;
    /// To what is only told.
    std::optional<AlertPanel::Answer> answerToMessage = AlertPanel::Answer::Default;
    bool isAuthorized = true;
    bool canAdministratorRemove = true;
    Failure failure = Failure::None;
    /// Also what a failure on demand says.
    QString reason = QStringLiteral("no reason at all");

    QList<AlertPanel> alerts;
    /// "alert", "rights", "remove as administrator", "create", "remove", "copy", and what a
    /// plug-in was asked.
    QStringList events;
    QVariantMap stored;
    QStringList keysRead;
    /// What rights were asked for: the tool and its arguments.
    QList<QByteArrayList> requests;
    /// The plug-ins that were asked for something, and what any says.
    QByteArrayList asked;
    Result<QString> answerOfPlugin = QString();
    /// The reasons that came of registering, empty if it went well.
    QStringList answers;

private:
    class FakeAuthorization;
    Result<> unless(Failure injected, const QString &event, const std::function<Result<>()> &operation);

    QTemporaryDir folder_;

public:
    const QByteArray root;
};

bool operator==(const AlertPanel &one, const AlertPanel &other);
void PrintTo(const AlertPanel &alert, std::ostream *stream);
