// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDateTime>
#include <QLocale>

/// How a time at which something was saved is shown: of the user's own zone and language.
inline QString QNBShownTime(const QDateTime &time)
{
    return QLocale().toString(time.toLocalTime(), QLocale::ShortFormat);
}
