// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A launcher of the test's own, first on the path, which writes down its arguments.
class TestLauncher
{
public:
    TestLauncher();
    ~TestLauncher();
    TestLauncher(const TestLauncher &) = delete;
    TestLauncher &operator=(const TestLauncher &) = delete;

    /// Before that, whatever the system has is found.
    void install();
    /// What the launcher was given, each argument in brackets, once it was started.
    QByteArray launched();
    /// Whether it was started so far.
    bool wasStarted() const;

private:
    QString record() const { return folder_.filePath(QStringLiteral("record")); }

    const QTemporaryDir folder_;
    const QByteArray path_;
};
