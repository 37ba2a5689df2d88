// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/HostWindow.h"

#include "Tests/Hosting/TestBundle.h"
#include "Tests/Session/ChildProcess.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QScreen>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>
#include <optional>

namespace {

class HostWindowTest : public ::testing::Test
{
protected:
    HostWindowTest()
        : stateHome_(qgetenv("XDG_STATE_HOME"))
    {
        qputenv("QUENBY_TEST_RECORD", recordPath().toUtf8());
        qputenv("XDG_STATE_HOME", folder_.path().toUtf8());
        TestBundle::make(panePath(), TestBundle::recordingPane());
        TestBundle::make(otherPanePath(), TestBundle::recordingPane(), QStringLiteral("Other title"));
        window_.emplace();
    }
    ~HostWindowTest() override
    {
        window_.reset();
        qunsetenv("QUENBY_TEST_RECORD");
        qunsetenv("QUENBY_TEST_BEHAVIOUR");
        qputenv("XDG_STATE_HOME", stateHome_);
    }

    QString recordPath() const { return folder_.filePath(QStringLiteral("record")); }
    QString panePath() const { return folder_.filePath(QStringLiteral("One.prefPane")); }
    QString otherPanePath() const { return folder_.filePath(QStringLiteral("Other.prefPane")); }
    /// The calls since the last time.
    QByteArray record() const
    {
        QFile file(recordPath());
        const QByteArray calls = file.open(QIODevice::ReadWrite) ? file.readAll() : QByteArray();
        file.resize(0);
        return calls;
    }
    void showWindow()
    {
        window_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&*window_));
    }

    /// Closes the window of a pane that cannot save, and presses the button that \a answers names next,
    /// again and again. Whether the window closes.
    bool closesWith(QStringList answers)
    {
        qputenv("QUENBY_TEST_BEHAVIOUR", "fail to save");
        QSignalSpy closing(&*window_, &HostWindow::closing);
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
            auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || answers.isEmpty())
                return;
            questions_ << box->informativeText();
            const QString answer = answers.takeFirst();
            for (QAbstractButton *button : box->buttons()) {
                if (QString(button->text()).remove(u'&') == answer) {
                    button->click();
                    return;
                }
            }
            ADD_FAILURE() << qPrintable(answer);
            box->reject();
        });
        poll.start(1);
        window_->close();
        EXPECT_TRUE(answers.isEmpty());
        return closing.count() == 1;
    }

    const QTemporaryDir folder_;
    std::optional<HostWindow> window_;
    /// What the user was told when asked.
    QStringList questions_;

private:
    const QByteArray stateHome_;
};

} // namespace

TEST_F(HostWindowTest, SelectsThePaneWhenItIsShownAndLeavesItOnce)
{
    window_->showPane(panePath());
    EXPECT_EQ(record(), "created\nloadMainView\nmainViewDidLoad\n");
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("Recording"));
    showWindow();
    EXPECT_EQ(record(), "didSelect\n");
    window_->hide();
    window_->show();
    EXPECT_EQ(record(), "");
    EXPECT_TRUE(window_->leave());
    EXPECT_EQ(record(), "didUnselect\ndestroyed\nview destroyed\n");
    window_.reset();
    EXPECT_EQ(record(), "");
}

TEST_F(HostWindowTest, LeavesOnePaneBeforeItShowsAnother)
{
    window_->showPane(panePath());
    showWindow();
    record();
    window_->showPane(panePath());
    EXPECT_EQ(record(), "");
    window_->showPane(otherPanePath());
    EXPECT_EQ(record(), "didUnselect\ndestroyed\nview destroyed\n"
                        "created\nloadMainView\nmainViewDidLoad\ndidSelect\n");
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("Other title"));
}

TEST_F(HostWindowTest, APaneThatCouldNotBeShownIsTriedAgain)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "make no pane");
    window_->showPane(panePath());
    showWindow();
    EXPECT_TRUE(window_->showsError());
    EXPECT_EQ(record(), "");
    qunsetenv("QUENBY_TEST_BEHAVIOUR");
    window_->showPane(panePath());
    EXPECT_FALSE(window_->showsError());
    EXPECT_EQ(record(), "created\nloadMainView\nmainViewDidLoad\ndidSelect\n");
}

TEST_F(HostWindowTest, LetsTheUserChooseAmongPanesByKeys)
{
    window_->showChooser({panePath(), otherPanePath()});
    showWindow();
    auto *const list = window_->findChild<QListWidget *>();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->count(), 2);
    EXPECT_EQ(list->item(1)->text(), QStringLiteral("Other title"));
    EXPECT_FALSE(list->accessibleName().isEmpty());
    EXPECT_EQ(record(), "");
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return window_->windowTitle() == u"Other title"; }));
    EXPECT_EQ(record(), "created\nloadMainView\nmainViewDidLoad\ndidSelect\n");
    EXPECT_FALSE(window_->findChild<QListWidget *>());
}

TEST_F(HostWindowTest, ShowsWhyThereIsNoPane)
{
    window_->showError(QStringLiteral("Because."));
    showWindow();
    auto *const label = window_->findChild<QLabel *>(QStringLiteral("errorReason"));
    ASSERT_TRUE(label);
    EXPECT_EQ(label->text(), QStringLiteral("Because."));
}

TEST_F(HostWindowTest, FilesWaitForThePaneThatComesAfterAPageOfTheHosts)
{
    window_->showError(QStringLiteral("Because."));
    showWindow();
    window_->openFiles({QStringLiteral("/one.qnbp")});
    window_->showPane(panePath());
    ASSERT_TRUE(waitUntil([&] {
        QFile file(recordPath());
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("openFiles /one.qnbp\n");
    }));
}

TEST_F(HostWindowTest, TheUsualKeysAskToCloseIt)
{
    window_->showPane(panePath());
    QSignalSpy closing(&*window_, &HostWindow::closing);
    showWindow();
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&*window_));
    QTest::keyClick(&*window_, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(closing.count(), 1);
    QTest::keyClick(&*window_, Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(closing.count(), 2);
    EXPECT_TRUE(window_->isVisible());
}

TEST_F(HostWindowTest, FitsItsScreenWhateverRoomThePaneNeeds)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "need much room");
    window_->showPane(panePath());
    showWindow();
    const QSize screen = window_->screen()->availableSize();
    const auto fits = [&screen](const QSize &size) {
        return size.width() < screen.width() && size.height() < screen.height();
    };
    EXPECT_TRUE(fits(window_->size())) << window_->width() << "x" << window_->height();
    EXPECT_TRUE(fits(window_->minimumSizeHint()));
    const auto *scroller = window_->findChild<QScrollArea *>();
    ASSERT_TRUE(scroller && scroller->widget());
    EXPECT_EQ(scroller->widget()->size(), QSize(5000, 4000)) << "the rest of it is scrolled to";
}

TEST_F(HostWindowTest, APlaceFromALargerScreenIsMadeToFit)
{
    window_->showPane(panePath());
    showWindow();
    window_->resize(3000, 2000);
    window_.reset();
    window_.emplace();
    window_->showPane(panePath());
    const QSize screen = window_->screen()->availableSize();
    EXPECT_LT(window_->width(), screen.width());
    EXPECT_LT(window_->height(), screen.height());
}

TEST_F(HostWindowTest, RemembersTheSizeForEachPane)
{
    window_->showPane(panePath());
    showWindow();
    window_->resize(611, 433);
    window_->showPane(otherPanePath());
    window_->resize(702, 501);
    window_.reset();

    window_.emplace();
    window_->showPane(panePath());
    EXPECT_EQ(window_->size(), QSize(611, 433));
    window_->showPane(otherPanePath());
    EXPECT_EQ(window_->size(), QSize(702, 501));
    EXPECT_TRUE(QFile::exists(folder_.filePath(QStringLiteral("Quenby/preferences.ini"))));
}

TEST_F(HostWindowTest, IsNeverSmallerThanThePaneNeeds)
{
    window_->showPane(panePath());
    showWindow();
    window_->resize(10, 10);
    EXPECT_GE(window_->width(), 500);
    EXPECT_GE(window_->height(), 300);
}

TEST_F(HostWindowTest, IsNoLargerThanTheScreenAtFirst)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "want much room");
    window_->showPane(panePath());
    showWindow();
    const QSize available = window_->screen()->availableSize();
    EXPECT_LE(window_->width(), available.width());
    EXPECT_LE(window_->height(), available.height());
}

TEST_F(HostWindowTest, ADamagedStateFileIsNoObstacle)
{
    ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("Quenby")));
    QFile state(folder_.filePath(QStringLiteral("Quenby/preferences.ini")));
    ASSERT_TRUE(state.open(QIODevice::WriteOnly));
    state.write("[place]\nOne=@ByteArray(\\x1\\x2nonsense)\n\0\0[[[");
    state.close();
    window_->showPane(panePath());
    showWindow();
    EXPECT_GE(window_->width(), 500);
}

TEST_F(HostWindowTest, AWindowWhosePaneCannotSaveAsksBeforeItCloses)
{
    window_->showPane(panePath());
    showWindow();
    EXPECT_FALSE(closesWith({QStringLiteral("Try Again"), QStringLiteral("Cancel")}));
    EXPECT_EQ(questions_, QStringList(2, QStringLiteral("The reason is: No room.")));
    EXPECT_TRUE(record().endsWith("didSelect\ndidUnselect\nsave\ndidSelect\n"));

    qunsetenv("QUENBY_TEST_BEHAVIOUR");
    QSignalSpy closing(&*window_, &HostWindow::closing);
    window_->close();
    EXPECT_EQ(closing.count(), 1) << "saved, it closes unasked";
}

TEST_F(HostWindowTest, WhoClosesWithoutSavingDoesSoAlsoIfItCouldBeSavedByNow)
{
    window_->showPane(panePath());
    showWindow();
    EXPECT_TRUE(closesWith({QStringLiteral("Close Without Saving")}));
    qunsetenv("QUENBY_TEST_BEHAVIOUR");
    EXPECT_FALSE(window_->leave());
    EXPECT_TRUE(record().endsWith("didSelect\ndidUnselect\ndestroyed\nview destroyed\n"))
        << record().constData();
}

TEST_F(HostWindowTest, AReasonShowsEveryCharacterOfAName)
{
    constexpr QChar rightToLeftOverride(0x202e);
    window_->showError(QStringLiteral("There is no pane called a") + rightToLeftOverride + u'b');
    const auto *reason = window_->findChild<QLabel *>(QStringLiteral("errorReason"));
    ASSERT_TRUE(reason);
    EXPECT_TRUE(reason->text().startsWith(u"There is no pane called a"));
    EXPECT_FALSE(reason->text().contains(rightToLeftOverride));
}

TEST_F(HostWindowTest, WhatIsToldAtTheStartStandsAboveThePaneAndLeavesTheKeyboardToIt)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "tell something");
    window_->showPane(panePath());
    showWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&*window_));
    const auto *strip = window_->findChild<NoticeStrip *>();
    ASSERT_TRUE(strip && strip->isVisible());
    QWidget *const keyboard = QApplication::focusWidget();
    ASSERT_TRUE(keyboard);
    EXPECT_FALSE(strip->isAncestorOf(keyboard));
    EXPECT_LT(strip->y(), keyboard->mapTo(&*window_, QPoint()).y());
    QTest::keyClick(keyboard, Qt::Key_Tab);
    EXPECT_TRUE(strip->isAncestorOf(QApplication::focusWidget()));
}

TEST_F(HostWindowTest, TheQuestionIsAnsweredByKeysAndToldToScreenReaders)
{
    window_->showPane(panePath());
    showWindow();
    qputenv("QUENBY_TEST_BEHAVIOUR", "fail to save");
    QList<Qt::Key> keys{Qt::Key_Return, Qt::Key_Escape};
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || keys.isEmpty())
            return;
        EXPECT_EQ(box->windowModality(), Qt::WindowModal);
        EXPECT_EQ(box->accessibleName(), QStringLiteral("Your changes could not be saved."));
        EXPECT_TRUE(box->accessibleDescription().contains(u"No room"));
        QTest::keyClick(box, keys.takeFirst());
    });
    poll.start(1);
    QSignalSpy closing(&*window_, &HostWindow::closing);
    window_->close();
    EXPECT_TRUE(keys.isEmpty());
    EXPECT_EQ(closing.count(), 0);
    EXPECT_TRUE(record().endsWith("didUnselect\nsave\ndidSelect\n")) << "Return tries again";
}

TEST_F(HostWindowTest, TheUserMayKeepAPaneThatCannotSaveFromBeingReplaced)
{
    window_->showPane(panePath());
    showWindow();
    qputenv("QUENBY_TEST_BEHAVIOUR", "fail to save");
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [] {
        if (auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            box->reject();
    });
    poll.start(1);
    window_->showPane(otherPanePath());
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("Recording"));
    EXPECT_FALSE(window_->leave());
}

TEST_F(HostWindowTest, ACopyIsSavedWhereTheUserSaysAndTheQuestionComesAgain)
{
    window_->showPane(panePath());
    showWindow();
    QStringList paths{
        folder_.filePath(QStringLiteral("nowhere/copy")), folder_.filePath(QStringLiteral("copy")), {}};
    QStringList proposed;
    QTimer choose;
    QObject::connect(&choose, &QTimer::timeout, &choose, [&] {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        proposed << QFileInfo(dialog->selectedFiles().value(0)).fileName();
        if (paths.constFirst().isEmpty()) {
            dialog->reject();
            return;
        }
        // A path that cannot be chosen by hand: the folder is removed meanwhile.
        QDir().mkpath(QFileInfo(paths.constFirst()).path());
        dialog->setDirectory(QFileInfo(paths.constFirst()).path());
        dialog->selectFile(paths.constFirst());
        if (paths.size() == 3)
            QDir().rmdir(QFileInfo(paths.constFirst()).path());
        paths.removeFirst();
        static_cast<QDialog *>(dialog)->accept();
    });
    choose.start(1);
    const QString saveCopy = QStringLiteral("Save a Copy…");
    EXPECT_TRUE(closesWith({saveCopy, saveCopy, saveCopy, QStringLiteral("Close Without Saving")}));
    ASSERT_EQ(questions_.size(), 4);
    EXPECT_EQ(proposed, QStringList(3, QStringLiteral("Copy of Recording.plist")));
    EXPECT_TRUE(questions_.at(1).contains(u"The copy could not be saved either"))
        << qPrintable(questions_.at(1));
    EXPECT_TRUE(questions_.at(2).contains(u"A copy of all that you made is in"));
    EXPECT_EQ(questions_.at(3), questions_.at(0)) << "nothing is said of a copy that was not wanted";
    EXPECT_TRUE(QFile::exists(folder_.filePath(QStringLiteral("copy"))));
}
