// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>

class QAbstractScrollArea;

/// Sees when a view has painted what was asked of it.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QAbstractScrollArea &view);

    /// Forgets what was painted until now.
    void begin() { isPainted_ = false; }
    /// Runs the event loop until the view has painted and nothing is left to do; false if it never does.
    bool waitUntilPainted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isPainted_ = false;
};
