// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

/// Code for a bundle; that it can be mapped is all that matters.
extern "C" int quenbyTestModule()
{
    return 0;
}
