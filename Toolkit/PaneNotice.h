// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QString>

#include <functional>

/// Something that the user is told above a pane's view, for as long as it is true, without being interrupted.
struct PaneNotice
{
    /// What it is about, the most important first: only that one is shown. There is at most one of a kind.
    enum class Kind {
        /// What the user made is not stored.
        SaveFailed,
        /// What is stored could not be read.
        Unreadable,
        /// What is stored was damaged, and something else took its place; may be dismissed.
        Replaced,
        /// Something from an earlier time is offered.
        Recovery,
        /// Of what the user has just asked for a part was not done; may be dismissed.
        LeftOut,
        /// Worth knowing once; may be dismissed.
        Hint,
        /// Something that the user may not know can be done; may be dismissed.
        Tip,
    };

    /// One button. What it does is called on the main thread; the notice stays until it is taken back.
    struct Action
    {
        QString title;
        std::function<void()> run;
    };

    Kind kind = Kind::Hint;
    /// A few whole sentences, plain text.
    QString text;
    /// More than fits, for who wants to know: shown as a tool tip and told to assistive technology.
    QString details = {};
    /// The one that Return should choose first.
    QList<Action> actions = {};
};
