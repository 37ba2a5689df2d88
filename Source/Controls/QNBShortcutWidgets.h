// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>

QT_BEGIN_NAMESPACE
class QAction;
class QWidget;
QT_END_NAMESPACE

/// Where the shortcut of an action works, so that a key means nothing but text where text is typed.
namespace QNBShortcutWidgets {

/// What takes the keyboard in \a page, but for what is typed into. Editors of names come and go, and are not
/// among them.
QList<QWidget *> withoutText(const QWidget &page);

/// The shortcut of \a action works where one of \a widgets has the focus, and not where a child of theirs has
/// it: an editor of a name is one.
void set(QAction &action, const QList<QWidget *> &widgets);

} // namespace QNBShortcutWidgets
