// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/FilePanel.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <memory>

namespace {

class FilePanelTest : public ::testing::Test
{
protected:
    FilePanelTest()
    {
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        for (const QString &name : {first, second}) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        }
        EXPECT_TRUE(QDir(folder.path()).mkdir(inner));
    }

    FilePanel panel(FilePanel::Kind kind) const
    {
        return {.kind = kind,
                .title = QStringLiteral("Take Something"),
                .acceptButton = QStringLiteral("Take"),
                .folder = folder.path(),
                .nameFilters = {QStringLiteral("Texts (*.txt)"), QStringLiteral("All files (*)")}};
    }

    /// Runs \a asked and does \a meanwhile once the dialog is there.
    QStringList answer(const FilePanel &asked, const std::function<void(QFileDialog &)> &meanwhile)
    {
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, &poll, [&poll, &meanwhile] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            poll.stop();
            meanwhile(*dialog);
        });
        poll.start(1);
        return FilePanel::runner()(window.get(), asked);
    }

    const QString first = QStringLiteral("one 100%.txt");
    const QString second = QStringLiteral("two#.txt");
    const QString inner = QStringLiteral("inner");
    QTemporaryDir folder;
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
};

TEST_F(FilePanelTest, AsksInFrontOfItsWindowInTheFolderGiven)
{
    answer(panel(FilePanel::Kind::Files), [this](QFileDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), u"Take Something");
        EXPECT_EQ(dialog.labelText(QFileDialog::Accept), u"Take");
        EXPECT_EQ(dialog.directory().path(), folder.path());
        EXPECT_EQ(dialog.windowModality(), Qt::WindowModal);
        EXPECT_EQ(dialog.parentWidget(), window.get());
        EXPECT_EQ(dialog.selectedNameFilter(), u"Texts (*.txt)");
        EXPECT_EQ(dialog.nameFilters().size(), 2);
        dialog.reject();
    });
}

TEST_F(FilePanelTest, AFolderThatIsNotThereIsLookedForAround)
{
    for (const FilePanel::Kind kind : {FilePanel::Kind::Files, FilePanel::Kind::Folder}) {
        FilePanel asked = panel(kind);
        asked.folder = folder.filePath(QStringLiteral("gone/long ago"));
        answer(asked, [this](QFileDialog &dialog) {
            EXPECT_EQ(dialog.directory().path(), folder.path());
            EXPECT_EQ(dialog.findChild<QLineEdit *>()->text(), u"");
            dialog.reject();
        });
    }
}

TEST_F(FilePanelTest, SeveralFilesCanBeTaken)
{
    const QStringList taken = answer(panel(FilePanel::Kind::Files), [this](QFileDialog &dialog) {
        auto *names = dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        names->setText(QStringLiteral("\"%1\" \"%2\"").arg(first, second));
        // What the button does.
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    EXPECT_EQ(taken, QStringList({folder.filePath(first), folder.filePath(second)}));
}

TEST_F(FilePanelTest, AFolderCanBeTaken)
{
    const QStringList taken = answer(panel(FilePanel::Kind::Folder), [this](QFileDialog &dialog) {
        EXPECT_TRUE(dialog.testOption(QFileDialog::ShowDirsOnly));
        dialog.selectFile(folder.filePath(inner));
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    EXPECT_EQ(taken, QStringList(folder.filePath(inner)));
}

TEST_F(FilePanelTest, CancellingTakesNothing)
{
    const QStringList taken = answer(panel(FilePanel::Kind::Files), [this](QFileDialog &dialog) {
        dialog.selectFile(folder.filePath(first));
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_TRUE(taken.isEmpty());
}

TEST_F(FilePanelTest, TakesNothingWhenItsWindowGoes)
{
    EXPECT_TRUE(answer(panel(FilePanel::Kind::Files), [this](QFileDialog &) { window.reset(); }).isEmpty());
}

} // namespace
