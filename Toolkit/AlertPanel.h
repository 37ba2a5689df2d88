// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <functional>

class QWidget;

/// A question or a message with up to three answers. All texts are plain.
struct AlertPanel
{
    enum class Answer {
        Default,
        Alternate,
        Other,
        /// The window or the program ended before there was an answer.
        None,
    };

    QString title;
    QString message;
    /// The answer to Return. The desktop's "OK" if empty.
    QString defaultButton;
    /// The answer to Escape; without it that is the default button. None if empty.
    QString alternateButton = {};
    /// None if empty.
    QString otherButton = {};

    /// Asks, in front of the window of \a parent and of nothing else, and waits.
    Answer run(QWidget *parent) const;

    /// Whoever puts questions holds one of these, so that there can be answers without windows.
    using Runner = std::function<Answer(QWidget *parent, const AlertPanel &alert)>;
    /// The one that asks the user.
    static Runner runner();
};
