// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/QNBPresetRecord.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>

/// What every file manager shows, in whatever form it wants it: a submenu of the presets by name, each of
/// which calls the helper.
///
/// Labels are data: a user, or whoever sent a preset, may have put anything in them. A preset whose label
/// cannot be passed to a program at all (a null character, a lone half of a character, more than the kernel
/// takes as an argument), or that shares it with another, is named by its number in the list.
struct PresetMenu
{
    struct Item
    {
        /// By which the helper knows the preset: its label in UTF-8, or its number.
        QByteArray name;
        /// What is shown: one line, not too long, never empty. Not yet escaped for anything.
        QString title;
    };

    /// \a helper is the absolute path of the helper's executable, in the file system's own bytes.
    static PresetMenu of(const QList<QNBPresetRecordPtr> &presets, const QByteArray &helper);

    /// What is called for \a item, but for the folders.
    QByteArrayList commandLine(const Item &item) const;
    /// Stands before each folder.
    static const QByteArray folderOption;

    /// Of the submenu.
    static const QString title;
    /// The name of an icon that every icon theme has.
    static const QString icon;

    QByteArray helper;
    QList<Item> items;
};
