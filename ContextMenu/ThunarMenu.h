// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManager.h"

/// Thunar: an action for each preset in the one file of the user's own actions, which is read when the
/// program starts, and never again while it runs. A user without that file has the system's: then ours is
/// made from that, and removed again when nothing but that is left in it.
class ThunarMenu final : public FileManager
{
public:
    QString name() const override;
    QString program() const override;
    bool hasEntries(const Manifest &manifest) const override;
    Result<QStringList> write(const PresetMenu &menu, Manifest &manifest) const override;
    Result<QStringList> remove(Manifest &manifest) const override;

    /// The elements for \a menu. Before version 4.17 the program knows no submenus, and refuses a file that
    /// has any. \a remarks get a sentence for each preset that the file has no form for.
    static QByteArrayList actions(const PresetMenu &menu, bool withSubmenu, QStringList &remarks);

protected:
    QString configurationFolder() const override;

private:
    QString actionsFile() const;
    /// What a user without a file of his own has.
    QByteArray actionsOfTheSystem() const;
    /// Whether the program that reads \a file does.
    bool knowsSubmenus(const QByteArray &file) const;
};
