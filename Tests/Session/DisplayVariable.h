// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Names a display to this process for as long as this lives.
class DisplayVariable
{
public:
    /// None if \a display is empty.
    explicit DisplayVariable(const QString &display)
        : hadOne_(qEnvironmentVariableIsSet(name))
        , before_(qgetenv(name))
    {
        if (display.isEmpty())
            qunsetenv(name);
        else
            qputenv(name, display.toLatin1());
    }
    ~DisplayVariable()
    {
        if (hadOne_)
            qputenv(name, before_);
        else
            qunsetenv(name);
    }
    DisplayVariable(const DisplayVariable &) = delete;
    DisplayVariable &operator=(const DisplayVariable &) = delete;

private:
    static constexpr char name[] = "DISPLAY";
    bool hadOne_;
    QByteArray before_;
};
