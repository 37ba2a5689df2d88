// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBPresetRecord.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>

/// What every file manager shows, in whatever form it wants it: a submenu of the presets by name, each of
/// which calls the helper, and an entry behind them that opens the launcher for the folder.
///
/// A file manager may show an old menu for days. So each entry calls the helper with what it shows: the
/// label, and which of the presets that have it is meant. What is no longer there is then refused, and
/// nothing else is created in its place.
///
/// Labels are data: a user, or whoever sent a preset, may have put anything in them. The entry of a preset
/// whose label cannot be passed to a program at all (a null character, a lone half of a character, more than
/// the kernel takes as an argument) does what the last one does.
struct PresetMenu
{
    struct Item
    {
        /// What is shown: one line, not too long, never empty. Not yet escaped for anything.
        QString title;
        /// What the helper is called with, but for the folders.
        QByteArrayList arguments;
    };

    /// \a helper is the absolute path of the helper's executable, in the file system's own bytes.
    static PresetMenu of(const QList<QNBPresetRecordPtr> &presets, const QByteArray &helper);

    /// What is called for \a item, but for the folders.
    QByteArrayList commandLine(const Item &item) const;
    /// Stands before each folder.
    static const QByteArray folderOption;

    /// Of the submenu.
    static const QString title;
    /// Of the last entry.
    static const QString moreTitle;
    /// The name of an icon that every icon theme has.
    static const QString icon;

    QByteArray helper;
    QList<Item> items;
};
