// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"

#include <QDir>
#include <QFile>

#include <csignal>

namespace {

const QString newFile = QStringLiteral("ctrl+n");
const QString newFolder = QStringLiteral("ctrl+shift+n");
const QString wedding = QStringLiteral("Wedding");
const QString presetFile = QStringLiteral("Wedding.qnbp");
/// A script that is only text.
const QString plainText = QStringLiteral("Aisle Music.sh");

/// One user's first day with the pane: from an empty home to a preset of their own, and every step of it
/// taken back and made again.
class DayOfWorkTest : public EditorFixture
{
protected:
    void startDropTarget()
    {
        const QString folder = session_.home().filePath(QStringLiteral("desktop"));
        QDir().mkpath(folder);
        exported_ = folder + u'/' + presetFile;
        dropTarget_ = std::make_unique<ChildProcess>(
            QStringLiteral(QUENBY_DROP_TARGET),
            QStringList{QStringLiteral("--at"),
                        QStringLiteral("%1,%2").arg(dropTargetPlace.x()).arg(dropTargetPlace.y()),
                        QStringLiteral("--into"), folder, QStringLiteral("--offer"), exported_},
            screen_.environmentFrom(session_.home().environment(session_.busAddress())));
        ASSERT_TRUE(dropTargetSays("ready"));
    }
    bool dropTargetSays(const QByteArray &line)
    {
        return waitUntil([&] { return dropTarget_->output().contains(line); });
    }

    void addPreset()
    {
        const qsizetype count = pane_.presets().size();
        // The button shows that it is pressed before it does its work.
        user_.presses(QStringLiteral("alt+n"));
        ASSERT_TRUE(waitUntil([&] { return pane_.presets().size() == count + 1; }))
            << count << ", then " << qPrintable(pane_.presets().join(u'\n'));
        user_.types(wedding);
        user_.presses(QStringLiteral("Return"));
        ASSERT_TRUE(waitUntil([&] { return pane_.presets().constLast() == wedding; }));
    }
    void describePreset()
    {
        user_.presses(QStringLiteral("alt+d"));
        user_.types(QStringLiteral("From planning to photos."));
        user_.presses(QStringLiteral("alt+f"));
    }
    void buildTree()
    {
        step("a folder", 2, [&] { addItem(newFolder, QStringLiteral("Planning")); });
        step("a file in it", 2, [&] { addItem(newFile, QStringLiteral("Budget.csv")); });
        step("a file after it", 2, [&] { addItem(newFile, QStringLiteral("Guests.csv")); });
        step("another", 2, [&] { addItem(newFile, QStringLiteral("Schedule.md")); });
        step("a folder after it", 2, [&] { addItem(newFolder, QStringLiteral("Photos")); });
        step("out of the folder", 1, [&] { user_.presses(QStringLiteral("alt+Left")); });
        step("a folder in that", 2, [&] { addItem(newFolder, QStringLiteral("Raw")); });
        step("a file in that", 2, [&] { addItem(newFile, QStringLiteral("Shot List.csv")); });
        step("out of that folder", 1, [&] { user_.presses(QStringLiteral("alt+Left")); });
        step("a file after it", 2, [&] { addItem(newFile, QStringLiteral("notes.txt")); });
        expectTree({QStringLiteral("Planning"), QStringLiteral("  Budget.csv"),
                    QStringLiteral("  Guests.csv"), QStringLiteral("  Schedule.md"), QStringLiteral("Photos"),
                    QStringLiteral("  Raw"), QStringLiteral("  Shot List.csv"),
                    QStringLiteral("  notes.txt")});
    }
    void setAttributes()
    {
        step("a label", 1, [&] {
            goToItem(QStringLiteral("Budget.csv"));
            user_.presses(QStringLiteral("ctrl+1"));
        });
        step("a label on a folder", 1, [&] {
            goToItem(QStringLiteral("Photos"));
            user_.presses(QStringLiteral("ctrl+5"));
        });
        step("a permission", 1, [&] {
            goToItem(QStringLiteral("Schedule.md"));
            openMenu(QStringLiteral("ctrl+i"));
            walkTo(QStringLiteral("Group: Write"),
                   {QStringLiteral("Down"), QStringLiteral("Down"), QStringLiteral("Right")});
            user_.presses({QStringLiteral("space"), QStringLiteral("Escape")});
        });
        // The box that is cleared, and what it is applied to.
        step("a folder's permissions, and all inside it", 2, [&] {
            goToItem(QStringLiteral("Photos"));
            openMenu(QStringLiteral("ctrl+i"));
            walkTo(QStringLiteral("Others: Read"),
                   {QStringLiteral("Down"), QStringLiteral("Down"), QStringLiteral("Down")});
            user_.presses(QStringLiteral("space"));
            walkTo(QStringLiteral("Apply to Everything Inside"), {QStringLiteral("Down")});
            user_.presses(QStringLiteral("space"));
        });
    }
    void chooseFromFolders()
    {
        step("the content of a file", 1, [&] {
            goToItem(QStringLiteral("Shot List.csv"));
            openMenu(QStringLiteral("Menu"));
            goToEntry(QStringLiteral("File Content"));
            openMenu(QStringLiteral("Right"));
            chooseEntry(QStringLiteral("Photo/Shot List.csv"));
        });
        step("a script", 1, [&] {
            openMenu(QStringLiteral("alt+s"));
            chooseEntry(QStringLiteral("Start Git Repository.sh"));
        });
        stepWithoutEdit("a script that cannot run", [&] {
            QFile script(session_.home().dataFolder() + QStringLiteral("/Quenby/Scripts/") + plainText);
            ASSERT_TRUE(script.open(QIODevice::WriteOnly)) << qPrintable(script.fileName());
            script.close();
            openMenu(QStringLiteral("alt+s"));
            chooseEntry(plainText);
            answerAlert(
                {QStringLiteral("Script File not Executable"),
                 QStringLiteral("Script file 'Aisle Music.sh' is not set to be executable. Please make "
                                "sure it is set to be executable (chmod +x)."),
                 QStringLiteral("OK")},
                QStringLiteral("Return"));
        });
    }
    void moveItems()
    {
        step("a file up by key", 1, [&] {
            goToItem(QStringLiteral("Guests.csv"));
            user_.presses(QStringLiteral("alt+Up"));
        });
        step("a file into a folder by mouse", 1, [&] {
            ASSERT_TRUE(user_.drags(pane_.item(QStringLiteral("notes.txt")).center(),
                                    pane_.item(QStringLiteral("Raw")).center(), *host_));
        });
        expectTree({QStringLiteral("Planning"), QStringLiteral("  Guests.csv"),
                    QStringLiteral("  Budget.csv"), QStringLiteral("  Schedule.md"), QStringLiteral("Photos"),
                    QStringLiteral("  Raw"), QStringLiteral("    notes.txt"),
                    QStringLiteral("  Shot List.csv")});
    }

    void movePreset()
    {
        step("the preset upwards by mouse", 1, [&] {
            ASSERT_TRUE(user_.drags(pane_.preset(wedding).center(),
                                    middleOfTop(pane_.preset(QStringLiteral("Event"))), *host_));
            ASSERT_TRUE(waitUntil([&] { return pane_.presets().indexOf(wedding) == 1; }));
        });
        step("the preset up by key", 1, [&] {
            goToPreset(wedding);
            user_.presses(QStringLiteral("alt+Up"));
            ASSERT_TRUE(waitUntil([&] { return pane_.presets().indexOf(wedding) == 0; }));
        });
    }
    void exportAndImportPreset()
    {
        ASSERT_NO_FATAL_FAILURE(startDropTarget());
        stepWithoutEdit("the preset is dragged to another program", [&] {
            ASSERT_TRUE(user_.drags(pane_.preset(wedding).center(), middleOfDropTarget, *host_));
            ASSERT_TRUE(dropTargetSays("copied " + exported_.toUtf8())) << dropTarget_->output().constData();
        });
        stepWithoutEdit("it is nearly removed", [&] {
            user_.presses(QStringLiteral("ctrl+Delete"));
            answerAlert(removal_, QStringLiteral("Escape"));
        });
        step("it is removed", 1, [&] {
            user_.presses(QStringLiteral("ctrl+Delete"));
            answerAlert(removal_, QStringLiteral("Return"));
            ASSERT_TRUE(waitUntil([&] { return !pane_.presets().contains(wedding); }));
        });
        step("the file is dragged to the list", 1, [&] {
            ASSERT_TRUE(user_.drags(middleOfDropTarget, middleOfTop(pane_.preset(QStringLiteral("Event"))),
                                    *dropTarget_));
            ASSERT_TRUE(waitUntil([&] { return pane_.presets().indexOf(wedding) == 1; }));
        });
    }
    /// By another implementation of property lists, which knows what comes along and what was done.
    void expectPresetsOfTheDay()
    {
        ChildProcess checker(QStringLiteral("python3"),
                             {QStringLiteral(QUENBY_TEST_DATA "/day.py"),
                              QStringLiteral(QUENBY_BUNDLE "/Contents/Resources/DefaultPresets.plist"),
                              session_.domain().path()});
        ASSERT_TRUE(checker.waitForEnd());
        EXPECT_TRUE(checker.hasReturned(0)) << (checker.output() + checker.errors()).constData();
    }
    static QPoint middleOfTop(const QRect &row) { return {row.center().x(), row.top()}; }

    const QStringList removal_{
        QStringLiteral("Remove Preset"),
        QStringLiteral("Are you sure you wish to permanently delete the preset 'Wedding'?"),
        QStringLiteral("Remove Preset"), QStringLiteral("Cancel")};
    QString exported_;
    std::unique_ptr<ChildProcess> dropTarget_;
};

} // namespace

TEST_F(DayOfWorkTest, IsKept)
{
    ASSERT_NO_FATAL_FAILURE(start());
    step("a preset is added", 2, [&] { addPreset(); });
    step("it is described", 1, [&] { describePreset(); });
    buildTree();
    setAttributes();
    chooseFromFolders();
    moveItems();
    movePreset();
    exportAndImportPreset();
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_NO_FATAL_FAILURE(undoAllAndRedoAll());
    // Leaving saves once more, and the same.
    const QByteArray last = session_.domain().bytes();
    user_.presses(QStringLiteral("ctrl+w"));
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_TRUE(host_->hasReturned(0)) << host_->errors().constData();
    EXPECT_TRUE(session_.domain().bytes() == last);
    expectPresetsOfTheDay();
}
