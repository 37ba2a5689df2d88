// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace Creation {

/// Says in one sentence what was not removed: the first of it by name, and how much more there is.
class Remains
{
public:
    void add(const QString &path, const QString &reason)
    {
        if (count_++ == 0)
            first_ = QStringLiteral("“%1” was left (%2)").arg(path, reason);
    }
    /// Empty if there is nothing.
    QString text() const
    {
        return count_ > 1 ? QStringLiteral("%1, and %2 more").arg(first_, QString::number(count_ - 1))
                          : first_;
    }

private:
    QString first_;
    qsizetype count_ = 0;
};

} // namespace Creation
