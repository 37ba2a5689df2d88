// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>
#include <optional>

/// An application bundle whose executable, a script, writes down how it was started and ends.
class TestApplication
{
public:
    /// No longer than the kernel keeps of a process's name, and no other program's.
    static constexpr char defaultExecutable[] = "RecordingApp";

    /// How the executable found itself.
    struct Start
    {
        /// As it was called.
        QByteArray program;
        QByteArray processName;
        QList<QByteArray> arguments;
        QByteArray folder;
        /// What standard input, output and error are.
        QList<QByteArray> standardFiles;
        qint64 process = 0;
        qint64 parent = 0;
        qint64 session = 0;
    };

    /// Makes the bundle at \a path, whose name ends in ".app".
    explicit TestApplication(const QString &path,
                             const QString &executable = QString::fromLatin1(defaultExecutable));

    /// An information file only: the executable may be missing, or be no program.
    static void makeBundle(const QString &path, const QString &executable);

    QString path() const { return path_; }
    QString executable() const { return executable_; }

    /// Waits for the executable to be started; none if it is not.
    std::optional<Start> start() const;
    bool wasStarted() const;

private:
    QString record() const { return records_.filePath(QStringLiteral("record")); }

    const QTemporaryDir records_;
    const QString path_;
    const QString executable_;
};
