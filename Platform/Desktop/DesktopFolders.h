// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QProcessEnvironment>
#include <QString>

/// The user's folders, found as the XDG Base Directory Specification says: a variable that is unset, empty or
/// no absolute path counts for nothing, and the default stands. Nothing is looked up twice, nothing kept.
/// None of the folders need exist, but for the two of the runtime.
namespace DesktopFolders {

/// `HOME`, else what the password database says; empty if neither is an absolute path.
QString home(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// `XDG_CONFIG_HOME`, default `~/.config`; empty without a home.
QString configHome(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// `XDG_DATA_HOME`, default `~/.local/share`; empty without a home.
QString dataHome(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// `XDG_STATE_HOME`, default `~/.local/state`; empty without a home.
QString stateHome(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// `Quenby` in the folder above: where our programs keep what they have to remember; empty without a home.
QString stateFolder(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// `XDG_RUNTIME_DIR`, else the folder that a login session would have, else ownRuntimeFolder(). Only a real
/// folder that belongs to this user and is closed to others is taken: another user must not be able to plant
/// files in it. Empty if there is none.
QString runtimeDirectory(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// `Runtime` in stateFolder(), for locks and sockets where the system has no place for them; made here,
/// closed to others. Empty if it cannot be made, or is another's.
QString ownRuntimeFolder(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// Whether \a path, or the nearest folder above it that is there, belongs to another user, who could not get
/// rid of what is written there. False of what is root's.
bool isOthers(const QString &path);

} // namespace DesktopFolders
