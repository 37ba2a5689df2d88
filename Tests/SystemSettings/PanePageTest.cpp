// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "SystemSettings/PanePage.h"

#include "Tests/Hosting/TestBundle.h"
#include "Tests/Session/AsyncResult.h"
#include "Tests/Session/TemporaryHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

using namespace std::chrono_literals;

namespace {

const QString paneName = QStringLiteral("Recording");
const QByteArray beginning = "created\nloadMainView\nmainViewDidLoad\n";
const QByteArray ending = "destroyed\nview destroyed\n";

class PanePageTest : public ::testing::Test
{
protected:
    PanePageTest()
        : runtimeFolder_(qgetenv("XDG_RUNTIME_DIR"))
    {
        qputenv("XDG_RUNTIME_DIR", folder_.path().toUtf8());
        qputenv("QUENBY_TEST_RECORD", recordPath().toUtf8());
        TestBundle::make(bundlePath(), TestBundle::recordingPane());
        window_.emplace().setFixedSize(600, 400);
    }
    ~PanePageTest() override
    {
        window_.reset();
        qunsetenv("QUENBY_TEST_RECORD");
        qunsetenv("QUENBY_TEST_BEHAVIOUR");
        qputenv("XDG_RUNTIME_DIR", runtimeFolder_);
    }

    QString panes() const { return folder_.filePath(QStringLiteral("panes")); }
    QString bundlePath() const { return panes() + QStringLiteral("/Recording.prefPane"); }
    QString recordPath() const { return folder_.filePath(QStringLiteral("record")); }
    /// The calls since the last time.
    QByteArray record() const
    {
        QFile file(recordPath());
        const QByteArray calls = file.open(QIODevice::ReadWrite) ? file.readAll() : QByteArray();
        file.resize(0);
        return calls;
    }
    /// A page in a window that is shown.
    PanePage *open()
    {
        auto *const page = new PanePage(paneName, {panes()}, &*window_);
        page->resize(window_->size());
        window_->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&*window_));
        return page;
    }
    static void waitUntilItGivesWay()
    {
        ASSERT_TRUE(waitUntil([] { return InstanceGuard().becomeFirst(); }));
    }
    /// What becomes of a start elsewhere that asks for \a files.
    static InstanceGuard::Outcome startElsewhere(std::chrono::milliseconds timeout,
                                                 const QStringList &files = {})
    {
        auto outcome = std::async(std::launch::async, [&] {
            return InstanceGuard().begin({QString(), {}, files}, timeout);
        });
        return resultOf(outcome);
    }
    static QString reason(const PanePage &page)
    {
        const auto *const label = page.findChild<QLabel *>(QStringLiteral("errorReason"));
        return label ? label->text() : QString();
    }

    const QByteArray runtimeFolder_;
    const QTemporaryDir folder_;
    std::optional<QWidget> window_;
};

} // namespace

TEST_F(PanePageTest, ThePaneIsSelectedWhenItIsShownAndLeftWhenItIsHidden)
{
    PanePage *const page = open();
    EXPECT_EQ(record(), beginning + "didSelect\n");
    page->hide();
    EXPECT_EQ(record(), "didUnselect\n");
    delete page;
    EXPECT_EQ(record(), ending);
}

TEST_F(PanePageTest, ThePaneGoesBeforeItsViewWhenThePageIsDeletedUnasked)
{
    delete open();
    EXPECT_EQ(record(), beginning + "didSelect\ndidUnselect\n" + ending);
}

TEST_F(PanePageTest, APageThatWasNeverShownIsNotLeft)
{
    delete new PanePage(paneName, {panes()});
    EXPECT_EQ(record(), beginning + ending);
}

TEST_F(PanePageTest, APageThatIsShownAgainReadsAnew)
{
    PanePage *const page = open();
    page->hide();
    waitUntilItGivesWay();
    EXPECT_TRUE(record().endsWith("didUnselect\ndestroyed\n")) << "others may offer what it held";
    page->show();
    EXPECT_EQ(record(), "view destroyed\n" + beginning + "didSelect\n");
    EXPECT_GE(page->sizeHint().width(), 500) << "its view counts at once";
}

TEST_F(PanePageTest, HasRoomForANotice)
{
    const PanePage page(paneName, {panes()});
    const int room = page.sizeHint().height();
    auto *const strip = page.findChild<NoticeStrip *>();
    strip->showNotice({.kind = PaneNotice::Kind::SaveFailed, .text = QStringLiteral("Told.")});
    EXPECT_LE(page.sizeHint().height(), room);
}

TEST_F(PanePageTest, APageThatIsHiddenAndShownInOneGoStaysAsItIs)
{
    PanePage *const page = open();
    record();
    page->hide();
    page->show();
    EXPECT_EQ(record(), "didUnselect\ndidSelect\n");
    QCoreApplication::processEvents();
    EXPECT_FALSE(InstanceGuard().becomeFirst());
}

TEST_F(PanePageTest, WhatCouldNotBeSavedStaysInThePage)
{
    PanePage *const page = open();
    record();
    qputenv("QUENBY_TEST_BEHAVIOUR", "fail to save");
    page->hide();
    EXPECT_EQ(record(), "didUnselect\n");
    QCoreApplication::processEvents();
    EXPECT_FALSE(InstanceGuard().becomeFirst()) << "another host would show the presets as they were";
    EXPECT_EQ(startElsewhere(1s), InstanceGuard::Outcome::NoAnswer) << "the user would see another page";
    page->show();
    EXPECT_TRUE(record().endsWith("didSelect\n"));
    EXPECT_EQ(startElsewhere(10s), InstanceGuard::Outcome::Handed);
}

TEST_F(PanePageTest, WhatCouldNotBeSavedIsSavedByAHiddenPageOnceThatCanBe)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "fail to save");
    PanePage *const page = open();
    page->hide();
    record();
    ASSERT_TRUE(waitUntil([&] { return record() == "save\n"; }, 30s));
    EXPECT_FALSE(InstanceGuard().becomeFirst());
    qunsetenv("QUENBY_TEST_BEHAVIOUR");
    EXPECT_TRUE(waitUntil([] { return InstanceGuard().becomeFirst(); }, 30s)) << "it gives way";
    EXPECT_EQ(record(), "save\ndestroyed\n");
}

TEST_F(PanePageTest, TheStripStandsAboveTheViewAndAfterItForTheKeyboard)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "tell something");
    const PanePage *const page = open();
    const auto *const strip = page->findChild<NoticeStrip *>();
    ASSERT_TRUE(strip && strip->isVisible());
    const QWidget *const view = page->focusProxy();
    ASSERT_TRUE(view);
    EXPECT_EQ(strip->geometry().bottom() + 1, view->geometry().top());
    EXPECT_EQ(view->geometry().size(), QSize(600, 400 - strip->height()));
    const QWidget *next = view;
    while (next != strip && next != page)
        next = next->nextInFocusChain();
    EXPECT_EQ(next, strip);
}

TEST_F(PanePageTest, WhoGivesTheKeyboardToThePageGivesItToTheView)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "tell something");
    PanePage *const page = open();
    page->setFocus();
    EXPECT_EQ(window_->focusWidget(), page->focusProxy());
}

TEST_F(PanePageTest, SaysThatThePaneIsMissing)
{
    const PanePage page(QStringLiteral("Other"), {panes()});
    EXPECT_EQ(reason(page), QStringLiteral("There is no settings pane called \"Other\" in\n%1").arg(panes()));
}

TEST_F(PanePageTest, APaneThatCouldNotBeLoadedIsLeftToOthersAndTriedAgain)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "make no pane");
    PanePage *const page = open();
    EXPECT_TRUE(reason(*page).contains(u"makes no pane")) << qPrintable(reason(*page));
    EXPECT_TRUE(InstanceGuard().becomeFirst());
    qunsetenv("QUENBY_TEST_BEHAVIOUR");
    page->hide();
    page->show();
    EXPECT_EQ(record(), beginning + "didSelect\n");
    EXPECT_FALSE(InstanceGuard().becomeFirst());
}

TEST_F(PanePageTest, APaneThatCannotBeLoadedIsTriedOnceForTheFirstDisplay)
{
    qputenv("QUENBY_TEST_BEHAVIOUR", "make no view");
    PanePage *const page = open();
    EXPECT_EQ(record(), "created\nloadMainView\ndestroyed\n");
    page->hide();
    page->show();
    EXPECT_EQ(record(), "created\nloadMainView\ndestroyed\n") << "and once for each later one";
}

TEST_F(PanePageTest, ABundleThatComesLaterIsFoundWhenThePageIsShown)
{
    ASSERT_TRUE(QDir(bundlePath()).removeRecursively());
    PanePage *const page = open();
    EXPECT_TRUE(reason(*page).startsWith(u"There is no settings pane called")) << qPrintable(reason(*page));
    TestBundle::make(bundlePath(), TestBundle::recordingPane());
    page->hide();
    page->show();
    EXPECT_EQ(record(), beginning + "didSelect\n") << qPrintable(reason(*page));
}

TEST_F(PanePageTest, TheHomeOfAnotherUserIsRefused)
{
    const TemporaryHome others;
    const QByteArray own = qgetenv("HOME");
    qputenv("HOME", others.homeOfAnother().toUtf8());
    const PanePage page(paneName, {panes()});
    qputenv("HOME", own);
    EXPECT_TRUE(reason(page).contains(u"belongs to another user")) << qPrintable(reason(page));
    EXPECT_EQ(record(), "");
}

TEST_F(PanePageTest, GivesWayToAnotherHostUntilThatHasEnded)
{
    std::optional<InstanceGuard> other(std::in_place);
    ASSERT_TRUE(other->becomeFirst());
    std::optional<InstanceGuard::Request> request;
    std::promise<void> begun;
    // It answers while the page waits here.
    const auto answer = std::async(std::launch::async, [&] {
        QEventLoop loop;
        other->handleWith([&](const InstanceGuard::Request &asked) {
            request = asked;
            loop.quit();
        });
        QTimer::singleShot(0, &loop, [&] { begun.set_value(); });
        QTimer::singleShot(10s, &loop, &QEventLoop::quit);
        loop.exec();
        other->close();
    });
    begun.get_future().wait();
    const auto page = std::make_unique<PanePage>(paneName, QStringList(panes()), nullptr);
    answer.wait();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->panePath, QString()) << "it keeps the pane that it shows";
    EXPECT_TRUE(reason(*page).contains(u"open in another window")) << qPrintable(reason(*page));
    page->show();
    EXPECT_EQ(record(), "");
    other.reset();
    EXPECT_TRUE(waitUntil([&] { return record() == beginning + "didSelect\n"; }));
    EXPECT_EQ(reason(*page), QString());
}

TEST_F(PanePageTest, WhatAnotherHostIsAskedForComesToThePage)
{
    open();
    record();
    EXPECT_EQ(startElsewhere(10s, {QStringLiteral("/a.qnbp")}), InstanceGuard::Outcome::Handed);
    EXPECT_TRUE(waitUntil([&] { return record() == "openFiles /a.qnbp\n"; }));
}

TEST_F(PanePageTest, ThePageThatWasLeftGivesWay)
{
    PanePage *const page = open();
    page->hide();
    waitUntilItGivesWay();
    std::optional<InstanceGuard> other(std::in_place);
    ASSERT_TRUE(other->becomeFirst());
    page->show();
    EXPECT_TRUE(reason(*page).contains(u"open in another window")) << qPrintable(reason(*page));
    record();
    other.reset();
    EXPECT_TRUE(waitUntil([&] { return record() == beginning + "didSelect\n"; }));
}
