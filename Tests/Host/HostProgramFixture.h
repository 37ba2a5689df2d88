// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/TemporaryHome.h"

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>

#include <gtest/gtest.h>

/// The real program, alone in a folder, with a pane that records its calls in the user's panes.
class HostProgramFixture : public ::testing::Test
{
protected:
    HostProgramFixture();

    QString program() const { return home_.filePath(QStringLiteral("bin/quenby-preferences")); }
    QString panePath() const
    {
        return home_.dataFolder() + QStringLiteral("/PreferencePanes/Recording.prefPane");
    }
    QString recordPath() const { return home_.filePath(QStringLiteral("record")); }
    QString goOnPath() const { return home_.filePath(QStringLiteral("go on")); }
    void setBehaviour(const QString &behaviour)
    {
        environment_.insert(QStringLiteral("QUENBY_TEST_BEHAVIOUR"), behaviour);
    }
    QByteArray record() const;
    bool waitForRecord(const QByteArray &call) const;
    /// Whether the process catches \a signal, by what the kernel says of it.
    static bool catches(qint64 pid, int signal);

    const TemporaryHome home_;
    QProcessEnvironment environment_;
};
