// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

/// Runs another program that reads or writes archives, in a home of its own where the files are exchanged.
class ArchivePeer
{
public:
    QString folder() const { return home_.path(); }
    QString path(const QString &name) const { return home_.filePath(name); }

    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    /// What the program prints; a failed expectation if it fails.
    QByteArray outputOf(const QString &program, const QStringList &arguments) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString &name :
             {QStringLiteral("HOME"), QStringLiteral("GNUSTEP_USER_ROOT"), QStringLiteral("TMPDIR"),
              QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral("XDG_DATA_HOME")})
            environment.insert(name, home_.path());
        environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(60'000)) << process.errorString().toStdString();
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return process.readAllStandardOutput();
    }

private:
    QTemporaryDir home_;
};
