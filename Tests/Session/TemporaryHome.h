// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

/// The folders of a user who exists for one test: home, configuration, data, state and runtime folder.
class TemporaryHome
{
public:
    TemporaryHome();

    QString path() const { return folder_.path(); }
    QString filePath(const QString &name) const { return folder_.filePath(name); }
    QString configFolder() const { return filePath(QStringLiteral("config")); }
    QString dataFolder() const { return filePath(QStringLiteral("data")); }
    QString systemDataFolder() const { return filePath(QStringLiteral("system")); }
    QString stateFolder() const { return filePath(QStringLiteral("state")); }
    QString runtimeFolder() const { return filePath(QStringLiteral("run")); }

    /// For programs of that user: no screen (offscreen windows) and, without \a busAddress, no bus.
    QProcessEnvironment environment(const QString &busAddress = {}) const;

    /// A home that belongs to another user than the one who runs the tests.
    QString homeOfAnother() const;

private:
    QTemporaryDir folder_;
};
