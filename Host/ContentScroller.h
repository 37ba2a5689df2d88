// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QScrollArea>

/// Shows a view as if it stood here itself, but scrolls it on a screen that is too small for it.
class ContentScroller final : public QScrollArea
{
public:
    /// Owns \a content, which may also go before.
    explicit ContentScroller(QWidget &content);

    QSize sizeHint() const override;
    /// The view's, but no more than any window has room for on the screen.
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
};
