// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/Bundle.h"
#include "Platform/Files/DurableFileWriter.h"

#include <QByteArray>
#include <QString>
#include <optional>

/// Which scripts the user has seen and allowed. A preset that somebody sent may name any script in the user's
/// folder, and the scripts come from somewhere too: so what counts is what a script says, by its SHA-256, and
/// not what it is called. Kept in `$XDG_STATE_HOME/Quenby`.
class ScriptApprovals
{
public:
    /// Those of the user, and the scripts that came with the pane.
    ScriptApprovals();
    /// In \a folder; \a pane may be none.
    ScriptApprovals(QString folder, std::optional<Bundle> pane);

    /// Whether the user has allowed a script of this content, or the pane carries it, byte for byte.
    bool isAllowed(const QByteArray &content) const;

    /// From now on. On failure it was not remembered, and the next run will ask again.
    Result<> allow(const QByteArray &content) const;

private:
    QString path() const;
    bool isShipped(const QByteArray &content) const;

    const QString folder_;
    const std::optional<Bundle> pane_;
};
