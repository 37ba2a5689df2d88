// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "PaneFixture.h"

#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QPushButton>

#include <vector>

/// A pane with content files and scripts of the test's own, and what a test asks of their menus.
class FolderMenusFixture : public PaneFixture
{
protected:
    static constexpr int fixedItems = 3;
    static constexpr int noFileTag = 2100;

    void TearDown() override { expectNothingSavedSinceStoring(); }

    /// A preset with a file in row 0 and a folder in row 1, the file selected; a second, empty one.
    void open()
    {
        ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("support/Quenby"))));
        store({preset(QStringLiteral("First"), {QStringLiteral("file"), QStringLiteral("folder/")}),
               preset(QStringLiteral("Second"))});
        openPane();
        outline().selectRow(0);
    }

    void makeContent(const QString &name) const
    {
        writeFile(QStringLiteral("support/Quenby/File Content/") + name, "content");
    }
    void makeScript(const QString &name, bool isExecutable = true) const
    {
        const QString file = QStringLiteral("support/Quenby/Scripts/") + name;
        writeFile(file, "#!/bin/sh\n");
        if (isExecutable) {
            ASSERT_TRUE(
                QFile::setPermissions(path(file), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
    }

    QMenu &contentMenu() const { return *outlet<QMenu>(QStringLiteral("_fileContentMenu")); }
    QMenu &scriptMenu() const { return *outlet<QMenu>(QStringLiteral("_ui_scriptSelectionMenu")); }
    QPushButton &scriptButton() const { return *outlet<QPushButton>(QStringLiteral("_scriptButton")); }

    static QList<QAction *> built(const QMenu &menu) { return menu.actions().mid(fixedItems); }
    static std::vector<QString> titles(const QMenu &menu)
    {
        std::vector<QString> result;
        for (const QAction *item : built(menu))
            result.push_back(item->data().toString());
        return result;
    }
    static QAction *entry(const QMenu &menu, const QString &title)
    {
        for (QAction *item : built(menu)) {
            if (item->data().toString() == title)
                return item;
        }
        return nullptr;
    }
    static QAction *noFileItem(const QMenu &menu)
    {
        for (QAction *item : menu.actions().mid(0, fixedItems)) {
            if (item->property("tag").toInt() == noFileTag)
                return item;
        }
        return nullptr;
    }
    /// The titles of the entries that are on; "none" for the no-file item.
    static QStringList checked(const QMenu &menu)
    {
        QStringList result;
        if (noFileItem(menu)->isChecked())
            result << QStringLiteral("none");
        for (const QAction *item : built(menu)) {
            if (item->isChecked())
                result << item->data().toString();
        }
        return result;
    }

    /// Lets the pane build the menu, and chooses from it as a click would.
    void choose(QMenu &menu, const QString &title)
    {
        pane->menuNeedsUpdate(menu);
        QAction *item = entry(menu, title);
        ASSERT_TRUE(item) << qPrintable(title);
        item->trigger();
    }
    void chooseNone(QMenu &menu)
    {
        pane->menuNeedsUpdate(menu);
        noFileItem(menu)->trigger();
    }

    QNBHierarchyItemPtr item(int row) const
    {
        return std::static_pointer_cast<QNBHierarchyItem>(outline().itemAtRow(row));
    }
    QString content() const { return item(0)->contentFilename(); }
    QVariant script(int index = 0) const
    {
        return controller().arrangedObjects().at(index)->valueForKey(QNBPresetKey::scriptFile);
    }
    bool canUndo() const { return outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled(); }
};
