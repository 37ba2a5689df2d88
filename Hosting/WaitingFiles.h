// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>
#include <QTimer>

#include <functional>

class PaneSession;

/// Files that the user has opened, until the pane can take them in: once no panel of it waits for an answer.
class WaitingFiles
{
public:
    /// \a shownPane says who takes them in; null as long as nobody can.
    explicit WaitingFiles(std::function<PaneSession *()> shownPane);

    /// Hands them over, now or later.
    void add(const QStringList &paths);

private:
    void handOver();

    const std::function<PaneSession *()> shownPane_;
    QStringList paths_;
    QTimer timer_;
};
