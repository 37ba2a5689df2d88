// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPushButton>

/// A button with a menu that keeps its text away from the arrow: most styles put the one right beside the
/// other.
class MenuButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

    QSize sizeHint() const override;
};
